#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/file_name.hpp"
#include "p3dgrid/form.hpp"

namespace mod_p3dgrid {

using p3dgrid::BlockExtents;

/// The extents of all blocks, an entry per block.
struct ExtentViews {
  integer_view i, j, k;

  [[nodiscard]] BlockExtents of(integer block) const { return {i(block), j(block), k(block)}; }
};

/// `points * values_per_point`, or the largest 64-bit integer if that overflows.
[[nodiscard]] std::int64_t values_of(std::int64_t points, std::int64_t values_per_point);

/// Points of a block; none if an extent is negative or the product exceeds 32 bits.
[[nodiscard]] std::optional<integer> points_of_block(const BlockExtents& extents);

/// Positions of the points of each block in the sequence of all points: block b has `npts(b)`
/// points, of which `iend(b)` is the last, counted from 1.
struct PointNumbering {
  allocatable<integer, 1> npts;
  allocatable<std::int64_t, 1> iend;
  std::int64_t total = 0;  ///< points of the blocks numbered so far

  /// Number of points before the first one of a block.
  [[nodiscard]] std::int64_t before(integer block) const { return iend(block) - npts(block); }

  /// Numbers the next block, `block`. If its extents are invalid, returns false and changes
  /// nothing.
  [[nodiscard]] bool number_block(integer block, const BlockExtents& extents);
};

/// Numbers the points of `nblocks` blocks. Invalid extents, and fewer extents than blocks, are a
/// fatal error.
/// @param file  beginning of the error message
[[nodiscard]] PointNumbering checked_numbering(const std::string& file, integer nblocks,
                                               const ExtentViews& extents);

/// Makes an array that holds fewer points than the blocks have a fatal error.
/// @param kind  of the file, such as "restart file "
void check_points(const char* kind, const FileName& filename, const char* name,
                  std::int64_t points_held, const PointNumbering& points);

}  // namespace mod_p3dgrid
