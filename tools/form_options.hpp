#pragma once

#include <optional>
#include <p3dgrid/layout.hpp>
#include <p3dgrid/reading.hpp>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// The members of the forms of a grid and of a restart file that options state.
struct StatedForms {
  StatedGridForm grid = {};
  StatedRestartForm restart = {};
  std::string grid_option = {};     ///< the first option given for the grid; empty for none
  std::string restart_option = {};  ///< the same for the restart file
};

/// An option and its value, as typed.
struct FormOption {
  std::string name;
  std::string value;

  friend bool operator==(const FormOption&, const FormOption&) = default;
};

/// "--grid-format binary --grid-iblank yes".
[[nodiscard]] std::string text_of(const std::vector<FormOption>& options);

/// The option that states a member of a form.
/// @param prefix  of the kind of file: "--grid", "--restart" or "--to"
template <class Value>
[[nodiscard]] std::string option_name(const std::string& prefix, const Member<Value>& member) {
  const bool own = member.only_in_restarts && prefix == "--restart";
  return (own ? "--" : prefix + "-") + member.name;
}

/// The options that state the same.
[[nodiscard]] std::vector<FormOption> options_of(const StatedGridForm& stated);
[[nodiscard]] std::vector<FormOption> options_of(const StatedRestartForm& stated);

/// Every option that applies to the file in this reading.
[[nodiscard]] std::vector<FormOption> options_of(const Reading& reading);

/// Parses "1-5,6-7" or "1,2,3". Empty if `text` is something else, leaves a variable out or names
/// one twice.
[[nodiscard]] std::optional<Sections> sections_in(const std::string& text);

/// Why a file of most layouts cannot have two dimensions, as part of a sentence.
inline constexpr const char* no_planar_files = "only layouts 2 and 3 have files of two dimensions";

/// Why something cannot be written in two dimensions, as part of a sentence.
[[nodiscard]] std::string planar_obstacle(const std::string& what);
/// The same for blocks of these extents; empty if they can be written.
[[nodiscard]] std::string planar_obstacle(const Extents& extents);

/// Whether numbers of text are rounded to single precision, although that has not been asked for.
[[nodiscard]] inline bool rounds_text(const Coding& read, const StatedCoding& stated,
                                      const Coding& written) {
  return is_text(read) && holds_singles(written) && !stated.precision;
}

}  // namespace p3dgrid::tool
