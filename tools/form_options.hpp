#pragma once

#include <optional>
#include <p3dgrid/layout.hpp>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// An option as it is typed, and the value that describes a file.
struct FormOption {
  std::string name;
  std::string value;

  [[nodiscard]] std::string text() const { return name + " " + value; }
};

/// The option that states a member of a form.
/// @param prefix  of the kind of file: "--grid", "--restart" or "--to"
template <class Value>
[[nodiscard]] std::string option_name(const std::string& prefix, const Member<Value>& member) {
  const bool own = member.only_in_restarts && prefix == "--restart";
  return (own ? "--" : prefix + "-") + member.name;
}

/// What has been stated, as options.
[[nodiscard]] std::vector<FormOption> options_of(const StatedGridForm& stated);
[[nodiscard]] std::vector<FormOption> options_of(const StatedRestartForm& stated);

/// Every option that says something of a file of this form.
[[nodiscard]] std::vector<FormOption> options_of(const GridForm& form);
[[nodiscard]] std::vector<FormOption> options_of(const RestartForm& form);

/// Most sections that the library has room for, and most variables that are taken for meant.
inline constexpr std::size_t most_sections = 30;
inline constexpr std::int32_t most_variables = 1'000'000;

/// "1-5,6-7" or "1,2,3" as sections; nothing when `text` is something else, leaves a variable out
/// or names one twice.
[[nodiscard]] std::optional<Sections> sections_in(const std::string& text);

/// True when values lose digits between a file of one coding and one of the other, because they
/// pass through single precision. Text may hold any number of digits; that some are lost shows only
/// where more are then written.
[[nodiscard]] inline bool loses_digits(const Coding& read, const Coding& written) {
  return holds_doubles(read) || (is_text(read) && holds_doubles(written));
}

}  // namespace p3dgrid::tool
