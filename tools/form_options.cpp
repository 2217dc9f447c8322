#include "form_options.hpp"

#include <algorithm>
#include <p3dgrid/index_range.hpp>
#include <utility>

namespace p3dgrid::tool {
namespace {

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
  for (const auto& [name, value] : options) text += (text.empty() ? "" : " ") + name + " " + value;
  return text;
}

std::vector<FormOption> options_of(const StatedGridForm& stated) {
  return options_with("--grid", stated);
}

std::vector<FormOption> options_of(const StatedRestartForm& stated) {
  return options_with("--restart", stated);
}

std::vector<FormOption> options_of(const Reading& reading) {
  if (reading.is_grid()) return options_of(applicable(stated_as(reading.grid())));
  const RestartForm& form = reading.restart();
  StatedRestartForm stated = applicable(stated_as(form));
  if (!traits_of(form.layout).may_hold_count()) stated.multiblock.reset();
  if (!traits_of(form.layout).planar) stated.coding.dimensions.reset();
  return options_of(stated);
}

std::string planar_obstacle(const std::string& what) {
  return "two dimensions have no place for " + what + "; --to-dimensions 3 has";
}

std::string planar_obstacle(const Extents& extents) {
  for (std::size_t b = 0; b < extents.k.size(); ++b) {
    if (extents.k[b] == 1) continue;
    return planar_obstacle("block " + std::to_string(b + 1) + " of " + extents.of(b).text() +
                           " points");
  }
  return "";
}

std::optional<Sections> sections_in(const std::string& text) {
  auto sections = numbers_in(text);
  const bool usable =
      sections && sections->size() <= most_sections && holds_each_variable_once(*sections);
  return usable ? std::move(sections) : std::nullopt;
}

}  // namespace p3dgrid::tool
