#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "plot/raster.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// A corner of a polygon in space and in the picture.
struct Corner {
  Vector place{};
  Vertex vertex{};
};

/// The part of a convex polygon that is in the box; fewer than three corners for none.
[[nodiscard]] std::vector<Corner> clipped(std::vector<Corner> polygon, const Box& box);

/// The part of a line that is in the box.
[[nodiscard]] std::optional<std::pair<Vertex, Vertex>> clipped(const Corner& from, const Corner& to,
                                                               const Box& box);

}  // namespace p3dgrid::tool::plot
