#include "sections.hpp"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

std::optional<integer> number_in(std::string_view text) {
  integer number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 1 && number <= most_variables ? std::optional(number) : std::nullopt;
}

std::optional<Section> section_in(std::string_view text) {
  const std::size_t dash = text.find('-');
  const auto first = number_in(text.substr(0, dash));
  const auto last = dash == text.npos ? first : number_in(text.substr(dash + 1));
  if (!first || !last || *last < *first) return std::nullopt;
  return Section{*first, *last};
}

bool holds_each_variable_once(Sections sections) {
  std::sort(sections.begin(), sections.end(),
            [](const Section& a, const Section& b) { return a.first < b.first; });
  integer next = 1;
  for (const Section& section : sections) {
    if (section.first != next) return false;
    next = section.last + 1;
  }
  return true;
}

}  // namespace

std::optional<Sections> sections_in(const std::string& text) {
  Sections sections;
  std::string_view rest = text;
  for (;;) {
    const std::size_t comma = rest.find(',');
    const auto section = section_in(rest.substr(0, comma));
    if (!section || sections.size() == most_sections) return std::nullopt;
    sections.push_back(*section);
    if (comma == rest.npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (!holds_each_variable_once(sections)) return std::nullopt;
  return sections;
}

std::string describe(const Sections& sections) {
  std::string text;
  for (const Section& section : sections) {
    if (!text.empty()) text += ',';
    text += std::to_string(section.first) + "-" + std::to_string(section.last);
  }
  return text;
}

integer variables_in(const Sections& sections) {
  integer variables = 0;
  for (const Section& section : sections) variables += section.variables();
  return variables;
}

}  // namespace p3dgrid
