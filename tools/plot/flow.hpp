#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "file_input.hpp"
#include "plot/picture.hpp"

namespace p3dgrid::tool::plot {

/// A flow variable to show by colour.
struct FlowVariable {
  std::string name;                 ///< "p", "variable 3"
  std::string title;                ///< "Pressure p"
  std::string label;                ///< "p"
  std::vector<std::int32_t> needs;  ///< variables of the file
  bool by_gamma = false;            ///< depends on the ratio of specific heats
  /// Its value from those of the needed variables.
  float (*from)(std::span<const float> values, double gamma) = nullptr;
  std::string long_name = {};  ///< "pressure"; empty for none
};

/// The names of variables of a solution, for messages.
[[nodiscard]] std::string known_names();

/// Sets the surfaces' values to those of the requested variable. Holds one variable of a block at a
/// time. Throws a Failure if the file has no such variable or cannot be read.
FlowVariable take_values(std::vector<Surface>& surfaces, const Request& request,
                         RestartInput& input);

}  // namespace p3dgrid::tool::plot
