#include "state/point_numbering.hpp"

#include <limits>

#include "state/run_end.hpp"
#include "state/unit.hpp"

namespace mod_p3dgrid {

std::int64_t values_of(std::int64_t points, std::int64_t values_per_point) {
  std::int64_t values = 0;
  const bool too_many = __builtin_mul_overflow(points, values_per_point, &values);
  return too_many ? std::numeric_limits<std::int64_t>::max() : values;
}

std::optional<integer> points_of_block(const BlockExtents& extents) {
  const auto [i, j, k] = extents;
  if (i < 0 || j < 0 || k < 0) return std::nullopt;
  // i*j fits 64 bits, i*j*k may not.
  const std::int64_t points = values_of(std::int64_t{i} * j, k);
  if (points > std::numeric_limits<integer>::max()) return std::nullopt;
  return static_cast<integer>(points);
}

bool PointNumbering::number_block(integer block, const BlockExtents& extents) {
  const std::optional<integer> points = points_of_block(extents);
  if (!points) return false;
  npts(block) = *points;
  total += *points;
  iend(block) = total;
  return true;
}

PointNumbering checked_numbering(const std::string& file, integer nblocks,
                                 const ExtentViews& extents) {
  for (const auto& array : {extents.i, extents.j, extents.k}) {
    if (array.extent(1) >= nblocks) continue;
    fail_run(file + ": extents of " + std::to_string(array.extent(1)) + " blocks for " +
             std::to_string(nblocks));
  }
  PointNumbering points;
  if (points.npts.allocate(nblocks) != allocation_done ||
      points.iend.allocate(nblocks) != allocation_done) {
    fail_run(file + ": out of memory");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    if (points.number_block(b, extents.of(b))) continue;
    fail_run(file + ": extents of block " + std::to_string(b) +
             " are below 0 or more than 32 bits can count");
  }
  return points;
}

void check_points(const char* kind, const FileName& filename, const char* name,
                  std::int64_t points_held, const PointNumbering& points) {
  if (points_held >= points.total) return;
  fail_run(kind + path_of(filename) + ": " + name + " holds " + std::to_string(points_held) +
           " points, " + std::to_string(points.total) + " are needed");
}

}  // namespace mod_p3dgrid
