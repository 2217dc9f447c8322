#include "state/point_numbering.hpp"

#include <limits>

namespace mod_p3dgrid {

bool PointNumbering::number_block(integer block, integer i, integer j, integer k) {
  if (i < 0 || j < 0 || k < 0) return false;
  // i*j fits 64 bits; with k it may not.
  std::int64_t points = 0;
  if (__builtin_mul_overflow(std::int64_t{i} * j, std::int64_t{k}, &points)) return false;
  if (points > std::numeric_limits<integer>::max() - total) return false;
  npts(block) = static_cast<integer>(points);
  istart(block) = static_cast<integer>(total + 1);
  total += points;
  iend(block) = static_cast<integer>(total);
  return true;
}

}  // namespace mod_p3dgrid
