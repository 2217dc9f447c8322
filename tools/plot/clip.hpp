#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "plot/raster.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// Parses "x0:x1,y0:y1" or "x0:x1,y0:y1,z0:z1".
[[nodiscard]] std::optional<Region> region_in(const std::string& text);

/// Leaves out the cells that lie outside the region.
void confine(Surface& surface, const Region& region);

/// A corner of a polygon in space and in the picture.
struct Corner {
  Vector place{};
  Vertex vertex{};
};

/// The part of a convex polygon that is in the box; fewer than three corners for none.
[[nodiscard]] std::vector<Corner> clipped(std::vector<Corner> polygon, const Region& box);

/// The part of a line that is in the box.
[[nodiscard]] std::optional<std::pair<Vertex, Vertex>> clipped(const Corner& from, const Corner& to,
                                                               const Region& box);

}  // namespace p3dgrid::tool::plot
