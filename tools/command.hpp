#pragma once

#include <functional>
#include <mod_p3dgrid/logical.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace p3dgrid::tool {

/// Returns what is wrong with the text of a value; empty if nothing is.
using Check = std::function<std::string(const std::string& text)>;

/// Where the value of an option goes. `bool` makes it a flag, a vector takes two numbers.
using Target = std::variant<bool*, mod_p3dgrid::integer*, double*, std::string*,
                            std::vector<double>*, std::optional<mod_p3dgrid::integer>*,
                            std::optional<double>*, std::function<void(const std::string&)>>;

/// Refuses an empty name.
[[nodiscard]] std::string not_empty(const std::string& text);

/// Accept numbers from `low` to `high`.
[[nodiscard]] Check in_range(mod_p3dgrid::integer low, mod_p3dgrid::integer high);
[[nodiscard]] Check in_range(double low, double high);

struct Option {
  std::string name;
  Target target;
  std::string meaning;
  std::string value_name = {};  ///< for the help; empty for the usual name of its type
  Check check = {};
  std::vector<std::string> choices = {};  ///< all values that it may have, where they are few
  std::string group = {};                 ///< heading in the help; empty for the usual one
  std::string excludes = {};              ///< an option that must not be given as well
};

/// A file or folder that a command works on.
struct Argument {
  enum class Presence {
    required,
    optional,
    last,  ///< required, and the last one given, so that the one before it may be left out
  };

  std::string name;
  std::string* target;
  std::string meaning;
  Presence presence = Presence::required;
};

/// A command of the program. Its targets must outlive the parsing of the command line.
struct Command {
  std::string name;
  std::string meaning;
  std::string footer;
  std::vector<Argument> arguments = {};
  std::vector<Option> options = {};
  std::function<void()> run;  ///< Throws a Failure when the work cannot be done.
};

[[nodiscard]] Command sample_command();
[[nodiscard]] Command info_command();
[[nodiscard]] Command convert_command();
[[nodiscard]] Command check_command();
[[nodiscard]] Command restart_command();
[[nodiscard]] Command tecplot_command();
[[nodiscard]] Command plot_command();

}  // namespace p3dgrid::tool
