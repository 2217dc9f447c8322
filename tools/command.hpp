#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace p3dgrid::tool {

/// Returns what is wrong with the text of a value; empty if nothing is.
using Check = std::function<std::string(const std::string& text)>;

/// The variable that receives the value of an option. `bool` makes the option a flag, a vector
/// takes several values.
using Target = std::variant<bool*, std::int32_t*, double*, std::string*, std::vector<double>*,
                            std::vector<std::string>*, std::optional<std::int32_t>*,
                            std::optional<double>*, std::function<void(const std::string&)>>;

/// Accept numbers from `low` to `high`.
[[nodiscard]] Check in_range(std::int32_t low, std::int32_t high);
[[nodiscard]] Check in_range(double low, double high);

/// Refuses texts for which `fits` returns false or nothing: "'TEXT' COMPLAINT".
template <class Fits>
[[nodiscard]] Check checked(const std::string& complaint, const Fits& fits) {
  return [complaint, fits](const std::string& text) {
    return fits(text) ? std::string() : "'" + text + "' " + complaint;
  };
}

struct Option {
  std::string name;
  Target target;
  std::string meaning;
  std::string value_name = {};  ///< in the help; empty for the name of its type
  Check check = {};
  std::vector<std::string> choices = {};  ///< its possible values; empty for any
  std::string group = {};                 ///< heading in the help; empty for the default
  std::string excludes = {};              ///< an option that cannot be given together with it
  bool is_input = false;                  ///< its value names a file that is read
  /// Values of a vector; `any_count` for one or more. Those of files end with the file written.
  int values = 2;

  static constexpr int any_count = -1;
};

/// A file or folder that a command works on.
struct Argument {
  enum class Use {
    input,
    output,
    folder,
    inputs,             ///< a vector
    inputs_and_output,  ///< a vector; the last is written
  };
  enum class Presence {
    required,
    optional,
    last,  ///< required; takes the last word, so that the one before it may be left out
  };

  std::string name;
  std::variant<std::string*, std::vector<std::string>*> target;
  std::string meaning;
  Use use = Use::input;
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
[[nodiscard]] Command extract_command();
[[nodiscard]] Command merge_command();
[[nodiscard]] Command split_command();
[[nodiscard]] Command transform_command();
[[nodiscard]] Command quality_command();
[[nodiscard]] Command vtk_command();

/// A program and its commands.
struct Program {
  std::string name;
  std::string meaning;
  std::string footer;
  std::vector<Command> commands;
};

/// A parsed command line: a command to run, or else a text to print (help, version).
struct Request {
  std::function<void()> run = {};
  std::string text;
  bool quiet = false;
  bool verbose = false;
  bool no_progress = false;
};

/// Throws a Failure for a wrong command line.
[[nodiscard]] Request read_command_line(const Program& program, int argc, const char* const* argv);

}  // namespace p3dgrid::tool
