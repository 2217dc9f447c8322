#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// The i, j and k extents of a block.
using BlockExtents = std::array<integer, 3>;

/// The extents of all blocks among an operation's arguments, an entry per block.
struct ExtentViews {
  array_view<const integer, 1> i, j, k;

  [[nodiscard]] BlockExtents of(integer block) const { return {i(block), j(block), k(block)}; }
};

/// Values of so many points, or the largest number of 64 bits if there are more.
[[nodiscard]] std::int64_t values_of(std::int64_t points, std::int64_t values_per_point);

/// Points of a block. None where an extent is below 0 or where 32 bits cannot count them.
[[nodiscard]] std::optional<integer> points_of_block(const BlockExtents& extents);

/// Where the points of each block lie in the one sequence of all points: block b holds `npts(b)`
/// points, `istart(b)` to `iend(b)`, counted from 1. A block without points ends before it starts.
/// The points of a block are counted in 32 bits, those of all blocks in 64.
struct PointNumbering {
  allocatable<integer, 1> npts;
  allocatable<std::int64_t, 1> istart;
  allocatable<std::int64_t, 1> iend;
  std::int64_t total = 0;  ///< points of the blocks numbered so far

  /// Points that lie before a block's first.
  [[nodiscard]] std::int64_t before(integer block) const { return iend(block) - npts(block); }

  /// Numbers block `block`, the one after those numbered before. False, with nothing changed, when
  /// `points_of_block` has none.
  [[nodiscard]] bool number_block(integer block, const BlockExtents& extents);
};

/// Numbers the points of `nblocks` blocks by the caller's extents. Fewer extents than blocks, and
/// extents that cannot be numbered, are a fatal error.
/// @param file  what the message begins with: the file at work
[[nodiscard]] PointNumbering checked_numbering(const std::string& file, integer nblocks,
                                               const ExtentViews& extents);

}  // namespace mod_p3dgrid
