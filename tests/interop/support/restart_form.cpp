#include "support/restart_form.hpp"

#include <algorithm>

namespace interop {
namespace {

using Section = std::pair<int, int>;

bool any_holds(const std::vector<Section>& sections, int variable) {
  return std::ranges::any_of(sections, [&](const Section& section) {
    return section.first <= variable && variable <= section.second;
  });
}

/// The variables that the flags behind the blocks of layout 101 announce.
std::vector<Section> extensions(const std::vector<int>& flags) {
  std::vector<Section> all;
  for (std::size_t m = 0; m < flags.size(); ++m) {
    if (flags[m] == 1) all.emplace_back(6, 10);
    if (flags[m] == 41 && m == 0) all.emplace_back(6, 8);
    if (flags[m] == 41 && m == 1) all.emplace_back(11, 13);
  }
  return all;
}

std::string joined(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += "_" + std::to_string(number);
  return text;
}

}  // namespace

int RestartForm::older_levels() const {
  if (layout != 0) return 0;
  return time_integration == 3 ? 2 : time_integration >= 2 ? 1 : 0;
}

bool RestartForm::holds_variable(int variable) const {
  if (leaves_out(variable)) return false;
  return any_holds(sections, variable) || (layout == 101 && any_holds(extensions(flags), variable));
}

int RestartForm::highest_variable() const {
  constexpr int most = 30;
  int variable = most;
  while (variable > 0 && !holds_variable(variable)) --variable;
  return variable;
}

RestartForm RestartForm::as_single() const {
  RestartForm form = *this;
  form.is_double = false;
  return form;
}

std::string RestartForm::name() const {
  std::string text = "layout_" + std::to_string(layout) + "_" + name_of_encoding(encoding) + "_" +
                     name_of_precision(is_double);
  if (!multiblock) text += "_uncounted";
  if (planar) text += "_planar";
  for (const Section& section : sections) text += joined({section.first, section.second});
  if (layout == 0) {
    text += "_eqid_" + std::to_string(equation_set) + "_time_" + std::to_string(time_integration);
  }
  if (layout == 101) text += "_flags" + joined(flags);
  return text;
}

}  // namespace interop
