#pragma once

#include <optional>
#include <vector>

#include "plot/levels.hpp"
#include "plot/raster.hpp"
#include "plot/surface.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// Where places of the grid are on the page.
struct Projection {
  View view;
  double scale = 1;  ///< page pixels per unit of length
  double left = 0;   ///< what stands at the left and the top edge of the picture, in grid units
  double top = 0;    ///< along the view's right and up
  double middle =
      0;  ///< of the box, toward the eye: far from 0, depths would lose their last digits

  [[nodiscard]] double x(const Vector& place) const {
    return scale * (dot(view.right, place) - left);
  }
  [[nodiscard]] double y(const Vector& place) const { return scale * (top - dot(view.up, place)); }
  /// In pixels too, larger where it is nearer to the eye.
  [[nodiscard]] double depth(const Vector& place) const {
    return scale * (dot(view.toward, place) - middle);
  }
};

/// How the surfaces are drawn.
struct Style {
  double line_width = 1;         ///< of mesh lines, page pixels
  std::optional<Levels> levels;  ///< of a filled contour; a mesh without
  std::size_t every = 1;         ///< every how many-th mesh line is drawn
};

/// Every how many-th mesh line can be drawn so that they stand apart on the page.
[[nodiscard]] std::size_t lines_apart(const std::vector<Surface>& surfaces,
                                      const Projection& projection, double least_distance);

/// Draws the surfaces: a filled contour with the outlines of the blocks, or mesh lines.
void render(const std::vector<Surface>& surfaces, const Projection& projection, const Style& style,
            Raster& raster);

}  // namespace p3dgrid::tool::plot
