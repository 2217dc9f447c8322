#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <p3dgrid/grid.hpp>
#include <p3dgrid/index_range.hpp>
#include <string>
#include <vector>

#include "geometry.hpp"

/// The quality of a grid: its cells and edges, and how its blocks meet.
namespace p3dgrid::tool {

/// The squared ratio of the lengths of adjacent edges, at least 1, from the squared lengths.
[[nodiscard]] inline double squared_ratio(double one, double other) {
  return one > other ? one / other : other / one;
}

/// The squared cosine of the angle between two edges; NaN if one has the length 0.
[[nodiscard]] inline double squared_cosine(const Vector& one, const Vector& other) {
  const double product = dot(one, other);
  return product * product / (dot(one, one) * dot(other, other));
}

/// The deviation of an angle from 90 degrees, divided by 90.
[[nodiscard]] inline double skewness_of(double squared_cosine) {
  return std::asin(std::sqrt(std::min(squared_cosine, 1.0))) / (std::numbers::pi / 2);
}

/// A measure with the point where it is worst, counted from 0.
struct Worst {
  double value = 0;
  BlockExtents place = {};
};

/// A number of occurrences and the first of them, counted from 0.
struct Occurrences {
  std::int64_t count = 0;
  BlockExtents first = {};

  /// Adds occurrences, the first of them at a place.
  void add(const BlockExtents& place, std::int64_t number = 1) {
    if (count == 0 && number > 0) first = place;
    count += number;
  }
};

enum class Handedness {
  none,  ///< a line, a point or a curved surface, or no volume at all
  right,
  left,
};

/// Of one that is not `none`.
[[nodiscard]] constexpr const char* name_of(Handedness handedness) {
  return handedness == Handedness::right ? "right" : "left";
}

/// The cells and edges of a block. Cells and edges with a blanked point, or one that is not finite,
/// are left out.
struct BlockQuality {
  BlockExtents extents = {};
  std::int64_t cells = 0;
  std::int64_t invalid_points = 0;  ///< not finite, and not blanked
  Handedness handedness = Handedness::none;
  Occurrences negative;             ///< cells whose volume has the sign of the other handedness
  Occurrences zero_volumes;         ///< cells
  Occurrences zero_edges;           ///< by their lower end
  std::optional<Worst> stretching;  ///< largest ratio of adjacent edges of a grid line, at least 1
  std::optional<Worst> skewness;  ///< largest deviation of a corner from 90 degrees, divided by 90
};

[[nodiscard]] BlockQuality quality_of(const Block& block);

/// An outer face of a block.
struct Face {
  std::int32_t block = 0;  ///< from 0
  Direction direction = Direction::i;
  bool upper = false;

  /// "i=1", "k=last".
  [[nodiscard]] std::string text() const;
  friend auto operator<=>(const Face&, const Face&) = default;
};

/// A pair of faces that share points.
struct Connection {
  Face one;
  Face other;
  bool is_whole = false;    ///< each point of either face is on the other
  std::int64_t points = 0;  ///< of the first face that are on the other
  IndexRange range = {};    ///< of the first block, in which these points lie
};

/// Points of the outer faces of blocks.
struct FacePoints {
  struct Point {
    Vector place;
    std::uint32_t face;     ///< its number
    BlockExtents index;     ///< in its block
    std::uint64_t key = 0;  ///< for the search
  };
  std::vector<Face> faces = {};
  std::vector<BlockExtents> extents = {};  ///< of each face
  std::vector<Point> points = {};

  /// Adds those of a block, without those that are not finite.
  void add(std::int32_t number, const Block& block);
};

/// The pairs of faces that share more than an edge or a corner.
/// @param tolerance  largest difference of each coordinate of points at the same place
[[nodiscard]] std::vector<Connection> connections_of(FacePoints all, double tolerance);

/// The measures and connections of a grid.
struct QualityReport {
  std::vector<BlockQuality> blocks = {};
  std::vector<Connection> connections = {};
};

/// Sums over all blocks.
struct QualityTotals {
  std::int64_t cells = 0;
  std::int64_t invalid_points = 0;
  std::int64_t negative = 0;
  std::int64_t zero_volumes = 0;
  std::int64_t zero_edges = 0;
  std::int64_t left_handed_blocks = 0;
};

[[nodiscard]] QualityTotals totals_of(const QualityReport& report);

void print_quality(const std::string& path, const QualityReport& report);
[[nodiscard]] std::string json_of(const std::string& path, const QualityReport& report);

}  // namespace p3dgrid::tool
