#pragma once

#include <array>
#include <mod_p3dgrid/logical.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool::plot {

/// What of a solution is shown by colour.
struct FlowVariable {
  std::string name;                         ///< "p", "variable 3"
  std::string title;                        ///< "Pressure p"
  std::string label;                        ///< "p"
  std::vector<mod_p3dgrid::integer> needs;  ///< variables of the file it comes from
  bool by_gamma = false;                    ///< it depends on the ratio of specific heats
  /// Its value from those of the variables it needs, in their order.
  float (*from)(std::span<const float> values, double gamma) = nullptr;
};

/// The names that a solution's variables have, for messages.
[[nodiscard]] std::string known_names();

/// True for one of the names, and for the number of a variable.
[[nodiscard]] bool may_be_variable(const std::string& text);

/// The variable of that name or number in a file of that layout. Throws a Failure where it has none
/// such.
/// @param path       the file, for messages
/// @param variables  number of variables in the file
[[nodiscard]] FlowVariable flow_variable(const std::string& text, const std::string& path,
                                         Layout layout, mod_p3dgrid::integer variables);

}  // namespace p3dgrid::tool::plot
