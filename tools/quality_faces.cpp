#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <set>

#include "quality.hpp"

namespace p3dgrid::tool {
namespace {

using Point = FacePoints::Point;

/// The points that a face shares with another.
struct Shared {
  BlockExtents low = {Indices::all_points, Indices::all_points, Indices::all_points};
  BlockExtents high = {};
  std::vector<std::int64_t> points = {};  ///< their numbers in the face

  /// Numbers per row: one more than its points, so that the end of a row and the beginning of the
  /// next are not adjacent.
  static std::int64_t width(std::int32_t extent) { return std::int64_t{extent} + 1; }

  void add(const Point& point, const Face& face, const BlockExtents& extents) {
    BlockExtents in_face = point.index;
    along(in_face, face.direction) = 0;
    points.push_back(in_face.i + width(extents.i) * (in_face.j + width(extents.j) * in_face.k));
    for (const Direction d : all_directions) {
      along(low, d) = std::min(along(low, d), along(point.index, d));
      along(high, d) = std::max(along(high, d), along(point.index, d));
    }
  }

  /// Whether all corners of a cell of the face are among the points. Faces that share only an edge
  /// or a corner have no such cell.
  [[nodiscard]] bool holds_cell(const BlockExtents& extents) {
    std::ranges::sort(points);
    std::vector<std::int64_t> corners = {0};
    std::int64_t step = 1;
    for (const Direction d : all_directions) {
      const std::size_t count = corners.size();
      for (std::size_t c = 0; along(extents, d) > 1 && c < count; ++c) {
        corners.push_back(corners[c] + step);
      }
      step *= width(along(extents, d));
    }
    return std::ranges::any_of(points, [&](std::int64_t point) {
      return std::ranges::all_of(corners, [&](std::int64_t corner) {
        return std::ranges::binary_search(points, point + corner);
      });
    });
  }
};

/// Edges of twice the tolerance, so that a point and its neighbours lie in at most two cubes in
/// each direction. Without a tolerance every point is a cube of its own.
using Cube = Vector;

Cube cube_of(const Vector& place, double tolerance) {
  Cube cube = place;
  for (double& c : cube) c = tolerance > 0 ? std::floor(c / (2 * tolerance)) : c;
  return cube;
}

/// A hash value. Points are sorted by it, since integers are compared faster than cubes. Collisions
/// do no harm, because coordinates are compared as well.
std::uint64_t key_of(const Cube& cube) {
  std::uint64_t key = 0;
  for (const double c : cube) {
    key ^= std::bit_cast<std::uint64_t>(c + 0.0);  // -0.0 becomes 0.0
    key *= 0x9e3779b97f4a7c15;
    key ^= key >> 32;
  }
  return key;
}

/// Calls `take` for each point of another face within the tolerance of `point`, which is one of
/// `points`. These are sorted by their keys.
template <class Take>
void for_each_near(const std::vector<Point>& points, const Point& point, double tolerance,
                   Take take) {
  const auto visit_cube = [&](const Cube& cube) {
    const std::uint64_t key = key_of(cube);
    auto near = points.begin() + (&point - points.data());
    if (key == point.key) {
      while (near != points.begin() && near[-1].key == key) --near;
    } else {
      near = std::ranges::lower_bound(points, key, {}, &Point::key);
    }
    for (; near != points.end() && near->key == key; ++near) {
      bool same = near->face != point.face;
      for (std::size_t c = 0; same && c < 3; ++c) {
        same = std::abs(near->place[c] - point.place[c]) <= tolerance;
      }
      if (same) take(*near);
    }
  };
  const Vector reach = {tolerance, tolerance, tolerance};
  const Cube low = cube_of(point.place - reach, tolerance);
  const Cube high = cube_of(point.place + reach, tolerance);
  // A point and its neighbours lie in at most two cubes in each direction.
  for (unsigned corner = 0; corner < 8; ++corner) {
    Cube cube = low;
    bool again = false;
    for (std::size_t c = 0; c < 3; ++c) {
      if ((corner >> c & 1) == 0) continue;
      again = again || high[c] == low[c];
      cube[c] = high[c];
    }
    if (!again) visit_cube(cube);
  }
}

}  // namespace

std::string Face::text() const {
  return std::string(1, name_of(direction)) + (upper ? "=last" : "=1");
}

void FacePoints::add(std::int32_t number, const Block& block) {
  for (const Direction d : all_directions) {
    if (along(block.extents, d) < 2) continue;
    for (const bool upper : {false, true}) {
      IndexRange range;
      range.set(d, upper ? Indices{Indices::all_points} : Indices{0, 0});
      const IndexRange place = range.in(block.extents);
      const Block face = extract(block, range);
      const auto id = static_cast<std::uint32_t>(faces.size());
      std::int64_t p = 0;
      for (std::int32_t k = 0; k < face.extents.k; ++k) {
        for (std::int32_t j = 0; j < face.extents.j; ++j) {
          for (std::int32_t i = 0; i < face.extents.i; ++i, ++p) {
            const Vector point = {face.x[p], face.y[p], face.z[p]};
            if (!std::ranges::all_of(point, [](double c) { return std::isfinite(c); })) continue;
            points.push_back(
                {point, id, {place.first.i + i, place.first.j + j, place.first.k + k}});
          }
        }
      }
      faces.push_back({number, d, upper});
      extents.push_back(face.extents);
    }
  }
}

std::vector<Connection> connections_of(FacePoints all, double tolerance) {
  for (Point& point : all.points) point.key = key_of(cube_of(point.place, tolerance));
  std::ranges::sort(all.points, {}, &Point::key);
  std::map<std::pair<std::uint32_t, std::uint32_t>, Shared> shared;
  std::set<std::uint32_t> others;
  for (const Point& point : all.points) {
    const Face& face = all.faces[point.face];
    others.clear();
    for_each_near(all.points, point, tolerance, [&](const Point& near) {
      // The faces of a block have edges in common.
      const bool same_point = all.faces[near.face].block == face.block && near.index == point.index;
      if (!same_point) others.insert(near.face);
    });
    for (const std::uint32_t other : others)
      shared[{point.face, other}].add(point, face, all.extents[point.face]);
  }
  std::vector<Connection> connections;
  for (auto& [pair, part] : shared) {
    const auto [one, other] = pair;
    if (one > other || !part.holds_cell(all.extents[one])) continue;
    const std::int64_t points = std::ssize(part.points);
    const bool is_whole = points == all.extents[one].points() &&
                          std::ssize(shared[{other, one}].points) == all.extents[other].points();
    connections.push_back(
        {all.faces[one], all.faces[other], is_whole, points, {part.low, part.high}});
  }
  return connections;
}

}  // namespace p3dgrid::tool
