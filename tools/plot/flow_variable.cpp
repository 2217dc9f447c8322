#include "plot/flow_variable.hpp"

#include <charconv>
#include <cmath>

#include "failure.hpp"
#include "primitive.hpp"
#include "table.hpp"

namespace p3dgrid::tool::plot {
namespace {

using mod_p3dgrid::integer;
using Values = std::span<const float>;

float as_read(Values values, double) {
  return values[0];
}

/// Density and one component of the momentum.
float velocity(Values values, double) {
  return values[1] / values[0];
}

float pressure(Values conserved, double gamma) {
  return static_cast<float>(primitive_of(conserved, gamma).pressure);
}

float mach_number(Values conserved, double gamma) {
  const Primitive at = primitive_of(conserved, gamma);
  const double speed = std::hypot(at.u, at.v, at.w);
  return static_cast<float>(speed / std::sqrt(gamma * at.pressure / at.density));
}

const std::vector<FlowVariable>& named() {
  static const std::vector<FlowVariable> variables = {
      {"rho", "Density \u03c1", "\u03c1", {1}, false, as_read},
      {"u", "Velocity u", "u", {1, 2}, false, velocity},
      {"v", "Velocity v", "v", {1, 3}, false, velocity},
      {"w", "Velocity w", "w", {1, 4}, false, velocity},
      {"p", "Pressure p", "p", {1, 2, 3, 4, 5}, true, pressure},
      {"mach", "Mach number", "Mach", {1, 2, 3, 4, 5}, true, mach_number},
  };
  return variables;
}

const FlowVariable* variable_named(const std::string& name) {
  for (const FlowVariable& candidate : named()) {
    if (name == candidate.name) return &candidate;
  }
  return nullptr;
}

std::optional<integer> number_in(const std::string& text) {
  integer number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < 1) return std::nullopt;
  return number;
}

FlowVariable numbered(integer number, Layout layout) {
  constexpr const char* solution[] = {"Density \u03c1", "Momentum \u03c1u", "Momentum \u03c1v",
                                      "Momentum \u03c1w", "Energy e"};
  constexpr const char* labels[] = {"\u03c1", "\u03c1u", "\u03c1v", "\u03c1w", "e"};
  const std::string text = std::to_string(number);
  FlowVariable variable{
      "variable " + text, "Variable " + text, "variable " + text, {number}, false, as_read};
  if (layout == Layout::solution && number <= solution_variables) {
    const auto n = static_cast<std::size_t>(number - 1);
    variable.title = solution[n];
    variable.label = labels[n];
  }
  return variable;
}

}  // namespace

std::string known_names() {
  std::string names;
  for (const FlowVariable& variable : named()) {
    names.append(names.empty() ? "" : ", ").append(variable.name);
  }
  return names;
}

bool may_be_variable(const std::string& text) {
  return variable_named(text) != nullptr || number_in(text).has_value();
}

FlowVariable flow_variable(const std::string& text, const std::string& path, Layout layout,
                           integer variables) {
  const auto refuse = [&](const std::string& why) {
    throw Failure(ExitStatus::unusable, path + ": " + why + "; --variable 1 to " +
                                            std::to_string(variables) + " can be shown");
  };
  if (const FlowVariable* known = variable_named(text)) {
    if (layout != Layout::solution) {
      refuse("only of layout 2 is it known which variable is '" + text + "'");
    }
    if (known->needs.back() > variables) refuse("has no momentum and energy to give " + text);
    return *known;
  }
  const integer number = number_in(text).value_or(0);
  if (number > variables) {
    refuse("holds " + counted(variables, "variable") + " and no variable " + text);
  }
  return numbered(number, layout);
}

}  // namespace p3dgrid::tool::plot
