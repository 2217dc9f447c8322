#include "state/point_numbering.hpp"

#include <limits>

#include "state/run_end.hpp"

namespace mod_p3dgrid {

bool count_points(std::int64_t& total, integer i, integer j, integer k) {
  if (i < 0 || j < 0 || k < 0) return false;
  // i*j fits 64 bits; with k it may not.
  std::int64_t points = 0;
  if (__builtin_mul_overflow(std::int64_t{i} * j, std::int64_t{k}, &points)) return false;
  if (points > std::numeric_limits<integer>::max() - total) return false;
  total += points;
  return true;
}

bool PointNumbering::number_block(integer block, integer i, integer j, integer k) {
  const std::int64_t before_it = total;
  if (!count_points(total, i, j, k)) return false;
  npts(block) = static_cast<integer>(total - before_it);
  istart(block) = static_cast<integer>(before_it + 1);
  iend(block) = static_cast<integer>(total);
  return true;
}

PointNumbering checked_numbering(const std::string& file, integer nblocks,
                                 array_view<const integer, 1> idim,
                                 array_view<const integer, 1> jdim,
                                 array_view<const integer, 1> kdim) {
  for (const auto* column : {&idim, &jdim, &kdim}) {
    if (column->extent(1) >= nblocks) continue;
    fail_run(file + ": extents of " + std::to_string(column->extent(1)) + " blocks for " +
             std::to_string(nblocks));
  }
  PointNumbering points;
  for (auto* array : {&points.npts, &points.istart, &points.iend}) {
    if (array->allocate(nblocks) != allocation_done) fail_run(file + ": out of memory");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    if (points.number_block(b, idim(b), jdim(b), kdim(b))) continue;
    fail_run(file + ": extents of block " + std::to_string(b) +
             " are below 0 or more than 32 bits can count");
  }
  return points;
}

}  // namespace mod_p3dgrid
