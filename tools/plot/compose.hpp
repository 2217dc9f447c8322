#pragma once

#include <MOD_P3DReader.hpp>
#include <optional>
#include <string>
#include <vector>

#include "form_options.hpp"
#include "plot/picture.hpp"
#include "plot/surface.hpp"
#include "primitive.hpp"

namespace p3dgrid::tool::plot {

/// What is wanted of which files.
struct Request {
  std::string grid_path;
  std::string restart_path;  ///< empty for mesh lines
  StatedGridForm grid;
  StatedRestartForm restart;
  std::string variable;            ///< name or number; empty for the first
  mod_p3dgrid::integer block = 0;  ///< from 1; 0 for all
  std::optional<GridPlane> plane;  ///< the blocks' outer faces without
  std::vector<double> view;        ///< azimuth and elevation, if stated
  double gamma = gamma_of_air;
  int width = 1600;

  [[nodiscard]] bool shows_flow() const { return !restart_path.empty(); }
};

/// Reads the files and puts together what is to be seen of them. Throws a Failure that names the
/// file which does not hold it.
[[nodiscard]] Picture compose(const Request& request);

}  // namespace p3dgrid::tool::plot
