#pragma once

#include <optional>
#include <string>
#include <vector>

#include "find.hpp"
#include "form_options.hpp"
#include "plot/flow_variable.hpp"
#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

/// What is to be shown of a restart file.
struct FlowRequest {
  const std::string& path;
  const Found& found;
  const std::optional<Extents>& grid;  ///< for layouts that hold no extents
  const std::string& variable;
  double gamma;
};

/// Gives the surfaces the values of a flow variable. Holds one variable of the file at a time,
/// where the file can be read so. Throws a Failure as `read_restart` does.
FlowVariable take_values(std::vector<Surface>& surfaces, const FlowRequest& request);

}  // namespace p3dgrid::tool::plot
