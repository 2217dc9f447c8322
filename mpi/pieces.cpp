#include "pieces.hpp"

#include <algorithm>

namespace p3dgrid::tool {

namespace {

/// For smaller pieces the calls cost more than the parallel work saves.
constexpr std::int64_t least_piece_bytes = std::int64_t{64} * 1024;

std::int64_t bytes_per_point_of(const BlockIndex& block) {
  std::int64_t bytes = 0;
  for (const StoredArray& array : block) {
    if (is_at_points(array)) bytes += bytes_of(array.kind);
  }
  return std::max<std::int64_t>(1, bytes);
}

}  // namespace

bool is_at_points(const StoredArray& array) {
  return array.content != Content::parameters;
}

std::vector<Piece> pieces_of(const Extents& extents, const std::vector<BlockIndex>& index,
                             int ranks) {
  std::int64_t all_bytes = 0;
  for (std::size_t b = 0; b < index.size(); ++b) {
    all_bytes += extents.points_of(b) * bytes_per_point_of(index[b]);
  }
  const std::int64_t most_bytes =
      std::clamp(all_bytes / ranks, least_piece_bytes, most_piece_bytes);
  std::vector<Piece> pieces;
  for (std::size_t b = 0; b < index.size(); ++b) {
    const std::int64_t points = extents.points_of(b);
    const std::int64_t plane = std::int64_t{extents.i[b]} * extents.j[b];
    const std::int64_t most = std::max<std::int64_t>(1, most_bytes / bytes_per_point_of(index[b]));
    const std::int64_t step = plane > 0 && most >= plane ? most / plane * plane : most;
    for (std::int64_t first = 0; first < points; first += step) {
      pieces.push_back({b, first, std::min(points, first + step)});
    }
  }
  return pieces;
}

}  // namespace p3dgrid::tool
