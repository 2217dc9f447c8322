#pragma once

#include <cstdint>
#include <p3dgrid/index.hpp>
#include <vector>

/// The distribution of the points of a file among the ranks.
namespace p3dgrid::tool {

/// Adjacent points of a block, with all arrays at these points.
struct Piece {
  std::size_t block = 0;
  std::int64_t first = 0;  ///< first point
  std::int64_t last = 0;   ///< behind the last point

  [[nodiscard]] std::int64_t points() const { return last - first; }
};

/// The most bytes of a file that a rank holds at a time.
inline constexpr std::int64_t most_piece_bytes = std::int64_t{16} * 1024 * 1024;

/// Cuts the blocks into pieces of whole k-planes, and larger planes into parts. Small files are cut
/// into about as many pieces as there are ranks.
[[nodiscard]] std::vector<Piece> pieces_of(const Extents& extents,
                                           const std::vector<BlockIndex>& index, int ranks);

/// Whether the array holds a value for each point.
[[nodiscard]] bool is_at_points(const StoredArray& array);

}  // namespace p3dgrid::tool
