#pragma once

#include <string>

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// Adds the points of one more block to `total`. False, with nothing changed, when an extent is
/// below 0 or when 32 bits cannot count the points up to here.
[[nodiscard]] bool count_points(std::int64_t& total, integer i, integer j, integer k);

/// Where the points of each block lie in the one sequence of all points: block b holds `npts(b)`
/// points, `istart(b)` to `iend(b)`, counted from 1. A block without points ends before it starts.
struct PointNumbering {
  allocatable<integer, 1> npts;
  allocatable<integer, 1> istart;
  allocatable<integer, 1> iend;
  std::int64_t total = 0;  ///< points of the blocks numbered so far

  /// Points that lie before a block's first.
  [[nodiscard]] std::int64_t before(integer block) const {
    return std::int64_t{iend(block)} - npts(block);
  }

  /// Numbers block `block`, the one after those numbered before. False as `count_points`.
  [[nodiscard]] bool number_block(integer block, integer i, integer j, integer k);
};

/// Numbers the points of `nblocks` blocks by the caller's extents. Fewer extents than blocks, and
/// extents that cannot be numbered, are an error of the run.
/// @param file  what the message begins with: the file at work
[[nodiscard]] PointNumbering checked_numbering(const std::string& file, integer nblocks,
                                               array_view<const integer, 1> idim,
                                               array_view<const integer, 1> jdim,
                                               array_view<const integer, 1> kdim);

}  // namespace mod_p3dgrid
