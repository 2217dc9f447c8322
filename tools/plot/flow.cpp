#include "plot/flow.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "failure.hpp"
#include "primitive.hpp"
#include "table.hpp"
#include "variable_names.hpp"

namespace p3dgrid::tool::plot {
namespace {

using Values = std::span<const float>;

float as_read(Values values, double) {
  return values[0];
}

/// From density and one component of the momentum.
float velocity(Values values, double) {
  return values[1] / values[0];
}

float pressure(Values conserved, double gamma) {
  return static_cast<float>(primitive_of<float>(conserved, gamma).pressure);
}

float mach_number(Values conserved, double gamma) {
  const Primitive at = primitive_of<float>(conserved, gamma);
  const double speed = std::hypot(at.u, at.v, at.w);
  return static_cast<float>(speed / std::sqrt(gamma * at.pressure / at.density));
}

// The variables of the file first, in its order.
const std::array named = {
    FlowVariable{"rho", "Density \u03c1", "\u03c1", {1}, false, as_read, solution_names[0]},
    FlowVariable{solution_names[1], "Momentum \u03c1u", "\u03c1u", {2}, false, as_read},
    FlowVariable{solution_names[2], "Momentum \u03c1v", "\u03c1v", {3}, false, as_read},
    FlowVariable{solution_names[3], "Momentum \u03c1w", "\u03c1w", {4}, false, as_read},
    FlowVariable{solution_names[4], "Energy e", "e", {5}, false, as_read},
    FlowVariable{"u", "Velocity u", "u", {1, 2}, false, velocity},
    FlowVariable{"v", "Velocity v", "v", {1, 3}, false, velocity},
    FlowVariable{"w", "Velocity w", "w", {1, 4}, false, velocity},
    FlowVariable{"p", "Pressure p", "p", {1, 2, 3, 4, 5}, true, pressure, "pressure"},
    FlowVariable{"mach", "Mach number", "Mach", {1, 2, 3, 4, 5}, true, mach_number},
};

/// The variable of this name; null if there is none.
const FlowVariable* find_named(const std::string& text) {
  const auto found = std::ranges::find_if(named, [&](const FlowVariable& variable) {
    return text == variable.name || (text == variable.long_name && !text.empty());
  });
  return found == named.end() ? nullptr : &*found;
}

/// @param name  empty if it is not known
FlowVariable numbered(std::int32_t number, Layout layout, const std::string& name) {
  if (!name.empty()) return {name, name, name, {number}, false, as_read};
  const std::string text = std::to_string(number);
  FlowVariable variable{
      "variable " + text, "Variable " + text, "variable " + text, {number}, false, as_read};
  if (traits_of(layout).parameters > 0 && number <= solution_variables) {
    const FlowVariable& known = named.at(static_cast<std::size_t>(number) - 1);
    variable.title = known.title;
    variable.label = known.label;
  }
  return variable;
}

/// The names of the variables that replace those of a PLOT3D solution; empty where there are none.
std::vector<std::string> own_names(const Request& request, const SolutionHeader& header) {
  if (request.names.empty() && traits_of(header.form.layout).parameters > 0) {
    return std::vector<std::string>(static_cast<std::size_t>(header.most_variables()));
  }
  return variable_names(request.restart_path, header, request.names);
}

/// Parses a positive number; 0 if the text is something else.
std::int32_t number_in(const std::string& text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end && number > 0 ? number : 0;
}

/// The requested variable.
FlowVariable variable_wanted(const Request& request, const SolutionHeader& header) {
  const Layout layout = header.form.layout;
  const std::int32_t variables = header.most_variables();
  const std::vector<std::string> names = own_names(request, header);
  const std::string text = request.variable.empty() ? std::string("1") : request.variable;
  const auto refuse = [&](const std::string& why) {
    throw Unusable(request.restart_path + ": " + why + "; --variable 1 to " +
                   std::to_string(variables) + " can be shown");
  };
  if (const auto found = std::ranges::find(names, text); found != names.end()) {
    return numbered(static_cast<std::int32_t>(found - names.begin()) + 1, layout, text);
  }
  if (const FlowVariable* const known = find_named(text)) {
    if (traits_of(layout).parameters == 0) {
      refuse("only of layout 2 is it known which variable is '" + text + "'");
    }
    if (known->needs.back() > variables) refuse("has no momentum and energy to give " + text);
    return *known;
  }
  const std::int32_t number = number_in(text);
  if (number == 0) {
    std::string known;
    for (const std::string& name : names) known += name.empty() ? "" : name + ", ";
    if (known.empty()) known = known_names() + ", ";
    refuse("'" + text + "' is neither " + known.substr(0, known.size() - 2) +
           " nor the number of a variable");
  }
  if (number > variables) {
    refuse("holds " + counted(variables, "variable") + " and no variable " + text);
  }
  return numbered(number, layout, names[static_cast<std::size_t>(number) - 1]);
}

/// Sets the values of the surfaces of one block.
void evaluate(std::vector<Surface>& surfaces, std::size_t block, const FlowVariable& variable,
              double gamma, RestartInput& input) {
  const std::size_t needs = variable.needs.size();
  std::vector<std::vector<float>> needed(surfaces.size());  // point after point
  for (std::size_t n = 0; n < needs; ++n) {
    const Reals values = input.read(block, {variable.needs[n]});
    for (std::size_t s = 0; s < surfaces.size(); ++s) {
      if (surfaces[s].block != block) continue;
      needed[s].resize(surfaces[s].points.size() * needs);
      std::size_t at = n;
      surfaces[s].for_each_value(values, [&](double value) {
        needed[s][at] = static_cast<float>(value);
        at += needs;
      });
    }
  }
  for (std::size_t s = 0; s < surfaces.size(); ++s) {
    for (std::size_t at = 0; at < needed[s].size(); at += needs) {
      const Values values(needed[s].data() + at, needs);
      surfaces[s].values.push_back(variable.from(values, gamma));
    }
  }
}

}  // namespace

std::string known_names() {
  std::string names;
  for (const FlowVariable& variable : named) {
    names.append(names.empty() ? "" : ", ").append(variable.name);
    if (!variable.long_name.empty()) names.append(" (" + variable.long_name + ")");
  }
  return names;
}

FlowVariable take_values(std::vector<Surface>& surfaces, const Request& request,
                         RestartInput& input) {
  const SolutionHeader& header = input.header();
  FlowVariable variable = variable_wanted(request, header);
  for (std::size_t b = 0; b < header.extents.i.size(); ++b) {
    const bool shown = std::ranges::find(surfaces, b, &Surface::block) != surfaces.end();
    if (shown) evaluate(surfaces, b, variable, request.gamma, input);
  }
  input.require_form();
  return variable;
}

}  // namespace p3dgrid::tool::plot
