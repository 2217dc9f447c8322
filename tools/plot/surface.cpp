#include "plot/surface.hpp"

#include <algorithm>
#include <cmath>

namespace p3dgrid::tool::plot {
namespace {

std::array<std::int64_t, 3> counts_of(const Extents& extents, std::size_t block) {
  return {extents.i[block], extents.j[block], extents.k[block]};
}

}  // namespace

std::optional<Surface> plane_of(const Extents& extents, std::size_t block, IndexPlane plane) {
  const auto counts = counts_of(extents, block);
  const std::array<std::int64_t, 3> steps = {1, counts[0], counts[0] * counts[1]};
  const auto fixed = static_cast<std::size_t>(plane.direction);
  const std::int64_t index =
      plane.index == Indices::all_points ? counts[fixed] : std::int64_t{plane.index} + 1;
  const std::size_t along = fixed == 0 ? 1 : 0;
  const std::size_t across = fixed == 2 ? 1 : 2;
  if (index > counts[fixed] || counts[along] < 2 || counts[across] < 2) return std::nullopt;
  return Surface{.block = block,
                 .columns = static_cast<std::size_t>(counts[along]),
                 .rows = static_cast<std::size_t>(counts[across]),
                 .first = (index - 1) * steps[fixed],
                 .column_step = steps[along],
                 .row_step = steps[across]};
}

std::vector<Surface> faces_of(const Extents& extents, std::size_t block) {
  const auto counts = counts_of(extents, block);
  const auto points = static_cast<std::size_t>(extents.points_of(block));
  if (points == 0) return {};
  if (std::ranges::count(counts, 1) >= 2) {
    return {{.block = block, .columns = points, .rows = 1, .column_step = 1}};
  }
  std::vector<Surface> faces;
  for (const Direction direction : all_directions) {
    for (const std::int32_t index : {0, Indices::all_points}) {
      if (index > 0 && counts[static_cast<std::size_t>(direction)] == 1) continue;
      auto face = plane_of(extents, block, {direction, index});
      if (face) faces.push_back(std::move(*face));
    }
  }
  return faces;
}

void take_points(Surface& surface, const Block& block) {
  surface.points.reserve(surface.columns * surface.rows);
  surface.absent.reserve(surface.columns * surface.rows);
  surface.for_each_index([&](std::int64_t index) {
    const auto at = [index](const Reals& values) { return static_cast<float>(values[index]); };
    const std::array point = {at(block.x), at(block.y), at(block.z)};
    const bool finite =
        std::ranges::all_of(point, [](float value) { return std::isfinite(value); });
    surface.points.push_back(point);
    const bool blanked =
        !block.iblank.empty() && block.iblank[static_cast<std::size_t>(index)] == 0;
    surface.absent.push_back(blanked || !finite ? 1 : 0);
    surface.has_invalid_points = surface.has_invalid_points || (!blanked && !finite);
  });
}

}  // namespace p3dgrid::tool::plot
