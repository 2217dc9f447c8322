#pragma once

#include <MOD_P3DReader.hpp>
#include <optional>
#include <string>
#include <vector>

namespace p3dgrid {

/// The variables `first` to `last` of a restart file, counted from 1, that one record holds.
struct Section {
  mod_p3dgrid::integer first = 1;
  mod_p3dgrid::integer last = 1;

  [[nodiscard]] mod_p3dgrid::integer variables() const { return last - first + 1; }
  friend bool operator==(const Section&, const Section&) = default;
};

/// How the variables of a block are spread over records, in file order. Every variable from 1 up
/// to the number of variables is in exactly one section.
using Sections = std::vector<Section>;

/// Most sections that the library has room for, and most variables that are taken for meant.
inline constexpr std::size_t most_sections = 30;
inline constexpr mod_p3dgrid::integer most_variables = 1'000'000;

/// "1-5,6-7" or "1,2,3" as sections; nothing when `text` is something else, leaves a variable out
/// or names one twice.
[[nodiscard]] std::optional<Sections> sections_in(const std::string& text);

/// The text that `sections_in` reads back.
[[nodiscard]] std::string describe(const Sections& sections);

/// Number of variables in all sections.
[[nodiscard]] mod_p3dgrid::integer variables_in(const Sections& sections);

}  // namespace p3dgrid
