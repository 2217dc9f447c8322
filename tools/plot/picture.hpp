#pragma once

#include <optional>
#include <string>
#include <vector>

#include "form_options.hpp"
#include "plot/clip.hpp"
#include "plot/scale.hpp"
#include "plot/surface.hpp"
#include "plot/view.hpp"
#include "primitive.hpp"

namespace p3dgrid::tool::plot {

/// What to show of which files.
struct Request {
  std::string grid_path;
  std::string restart_path;  ///< empty for a mesh
  StatedForms stated;
  std::string variable;            ///< name or number; empty for the first
  std::vector<std::string> names;  ///< of the variables, if stated
  std::int32_t block = 0;          ///< from 1; 0 for all
  std::vector<IndexPlane> planes;
  std::vector<CoordinatePlane>
      cuts;  ///< without these and planes, the outer faces of the blocks are shown
  std::optional<Region> region;
  std::optional<CellQuality> quality;
  std::vector<double> view;  ///< azimuth and elevation, if stated
  double gamma = gamma_of_air;
  int width = 1600;

  [[nodiscard]] bool shows_flow() const { return !restart_path.empty(); }
  [[nodiscard]] bool shows_faces() const { return planes.empty() && cuts.empty(); }
};

/// What a picture shows and says.
struct Picture {
  std::string title;
  std::vector<std::string> remarks;  ///< below the title
  std::string summary;               ///< in plain characters, for a terminal
  std::string difference;            ///< what a nearly flat view leaves out; empty for nothing
  std::vector<Surface> surfaces;
  std::optional<Levels> levels;  ///< of the values of the surfaces; none for a mesh
  std::string bar_label;         ///< names the values
  View view;
  Box box;               ///< around the surfaces
  bool is_part = false;  ///< the surfaces go on beyond the box
  int width = 1600;      ///< largest width of the page, in pixels
};

/// Reads the files and makes a picture of them. Throws a Failure that names the file at fault.
[[nodiscard]] Picture compose(const Request& request);

/// Draws a picture into a PNG file: the surfaces as large as the page allows, at true proportions,
/// and the page no larger than needed. Throws a Failure that does not name the file if it cannot be
/// written.
void draw(const Picture& picture, const std::string& path);

}  // namespace p3dgrid::tool::plot
