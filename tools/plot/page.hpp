#pragma once

#include <string>
#include <vector>

#include "plot/axes.hpp"
#include "plot/picture.hpp"
#include "plot/render.hpp"
#include "plot/side_panel.hpp"

namespace p3dgrid::tool::plot {

/// Where everything of a picture is on its page, in pixels.
struct Page {
  int width = 0;
  int height = 0;
  double text = 0;  ///< size of ordinary text
  double margin = 0;
  Area area;  ///< of the surfaces
  Projection projection;
  Style style;
  SidePanel panel;
  double panel_x = 0;
  double panel_height = 0;
  std::string title;
  Font title_font;
  std::vector<std::string> remarks;  ///< lines
  Font remark_font;
  double line_distance = 0;  ///< from a line of remarks to the next
};

/// Makes the surfaces as large as the page allows, at true proportions, and the page no larger
/// than that takes.
[[nodiscard]] Page lay_out(const Picture& picture);

}  // namespace p3dgrid::tool::plot
