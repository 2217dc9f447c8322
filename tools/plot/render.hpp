#pragma once

#include <optional>
#include <vector>

#include "plot/raster.hpp"
#include "plot/scale.hpp"
#include "plot/surface.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// The colour of a block's lines. Blocks are counted from 0; colours repeat.
[[nodiscard]] Colour block_colour(std::size_t block);

/// How the surfaces are drawn.
struct Style {
  double line_width = 1;            ///< of mesh lines, in pixels of the page
  std::optional<Levels> levels;     ///< of a filled contour; none for a mesh
  std::size_t line_stride = 1;      ///< 1 draws all mesh lines, 2 every other one
  std::optional<Region> clip = {};  ///< what is beyond is not drawn
};

/// The smallest `Style::line_stride` for which the mean distance of lines is at least the given
/// one.
[[nodiscard]] std::size_t line_stride(const std::vector<Surface>& surfaces,
                                      const Projection& projection, double least_distance);

/// Draws the surfaces as a filled contour with the outlines of the blocks, or as a mesh.
void render(const std::vector<Surface>& surfaces, const Projection& projection, const Style& style,
            Raster& raster);

}  // namespace p3dgrid::tool::plot
