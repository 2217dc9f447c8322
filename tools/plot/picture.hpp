#pragma once

#include <string>
#include <vector>

#include "plot/surface.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// What is to be seen, and what is said about it.
struct Picture {
  std::string title;
  std::vector<std::string> remarks;  ///< below the title, one after another
  std::string summary;               ///< the same in plain characters, for a terminal
  std::string bar_label;             ///< names the values of the surfaces; empty for mesh lines
  std::vector<Surface> surfaces;
  View view;
  Box box;           ///< around the surfaces
  int width = 1600;  ///< of the page, at most, in pixels
};

/// Draws the picture into a PNG file. Throws a Failure, which does not name the file, where that
/// cannot be written.
void draw(const Picture& picture, const std::string& path);

}  // namespace p3dgrid::tool::plot
