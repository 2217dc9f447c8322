#include "form_options.hpp"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace p3dgrid::tool {
namespace {

std::optional<std::int32_t> number_in(std::string_view text) {
  std::int32_t number = 0;
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
  std::ranges::sort(sections, {}, &Section::first);
  std::int32_t next = 1;
  for (const Section& section : sections) {
    if (section.first != next) return false;
    next = section.last + 1;
  }
  return true;
}

constexpr std::size_t most_sections = 30;  // that the library has room for

std::string value_text(const auto& value) {
  return name_of(value);
}
std::string value_text(const Sections& sections) {
  return describe(sections);
}

/// Removes what files of this encoding do not have.
template <class Stated>
Stated applicable(Stated stated) {
  const Encoding encoding = *stated.coding.encoding;
  Stated::for_each_member(
      [encoding](const auto& member, auto& choice) {
        if (!is_in(member.scope, encoding)) choice.reset();
      },
      stated);
  return stated;
}

template <class Stated>
std::vector<FormOption> options_with(const std::string& prefix, const Stated& stated) {
  std::vector<FormOption> options;
  Stated::for_each_member(
      [&](const auto& member, const auto& choice) {
        if (choice) options.push_back({option_name(prefix, member), value_text(*choice)});
      },
      stated);
  return options;
}

}  // namespace

std::string text_of(const std::vector<FormOption>& options) {
  std::string text;
  for (const FormOption& option : options) text += (text.empty() ? "" : " ") + option.text();
  return text;
}

std::vector<FormOption> options_of(const StatedGridForm& stated) {
  return options_with("--grid", stated);
}

std::vector<FormOption> options_of(const StatedRestartForm& stated) {
  return options_with("--restart", stated);
}

std::vector<FormOption> options_of(const GridForm& form) {
  return options_of(applicable(stated_as(form)));
}

std::vector<FormOption> options_of(const RestartForm& form) {
  StatedRestartForm stated = applicable(stated_as(form));
  if (!traits_of(form.layout).may_hold_count()) stated.multiblock.reset();
  return options_of(stated);
}

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

}  // namespace p3dgrid::tool
