#pragma once

#include <string>

#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

/// A measure of the cells of a surface.
enum class CellQuality {
  skewness,    ///< largest deviation of a corner from 90 degrees, divided by 90
  stretching,  ///< largest ratio of an edge to its neighbours on the grid line, at least 1
};

[[nodiscard]] constexpr const char* name_of(CellQuality quality) {
  return quality == CellQuality::skewness ? "skewness" : "stretching";
}

/// Sets the values of the cells of a grid surface, or of the cells of the block that a cut crosses,
/// from the coordinates of the block in their full precision.
void take_quality(Surface& surface, const Block& block, CellQuality quality);

}  // namespace p3dgrid::tool::plot
