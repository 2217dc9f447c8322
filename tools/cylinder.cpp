#include "cylinder.hpp"

#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using Point = std::array<double, 3>;

struct BlockSize {
  integer i, j, k;
};

/// Position of the point (i, j, k), counted from 0, in a block of these extents.
using Shape = std::function<Point(const BlockSize&, integer i, integer j, integer k)>;

struct Block {
  BlockSize extents;
  Shape shape;
};

constexpr double wall_radius = 1.0;
constexpr double outer_radius = 8.0;
constexpr double radial_growth = 1.15;  // of each step against the one before
constexpr double span = 2.0;

constexpr double wake_begin = 3.0;
constexpr double wake_end = 20.0;
constexpr double wake_half_height = 4.0;
constexpr double overlap = 1.0;  // depth to which the ring and the box are both in use

/// Share of the way from the first point (0) to the last (1).
double share(integer index, integer points) {
  return static_cast<double>(index) / static_cast<double>(points - 1);
}

double stretched_share(integer index, integer points) {
  return (std::pow(radial_growth, index) - 1.0) / (std::pow(radial_growth, points - 1) - 1.0);
}

/// Angles that are multiples of a right angle give whole numbers: both halves of the ring then meet
/// in the same points to the last bit.
double without_residue(double value) {
  return std::abs(value) < 1e-12 ? 0.0 : value;
}

/// Half of the ring, clockwise from `first_angle` (in half turns).
Shape half_ring(double first_angle) {
  return [first_angle](const BlockSize& extents, integer i, integer j, integer k) -> Point {
    const double angle = (first_angle - share(i, extents.i)) * std::numbers::pi;
    const double radius =
        wall_radius + (outer_radius - wall_radius) * stretched_share(j, extents.j);
    return {radius * without_residue(std::cos(angle)), radius * without_residue(std::sin(angle)),
            span * share(k, extents.k)};
  };
}

Point wake_box(const BlockSize& extents, integer i, integer j, integer k) {
  return {wake_begin + (wake_end - wake_begin) * share(i, extents.i),
          wake_half_height * (2.0 * share(j, extents.j) - 1.0), span * share(k, extents.k)};
}

std::array<Block, 3> blocks() {
  return {Block{{49, 25, 5}, half_ring(1.0)}, Block{{41, 25, 5}, half_ring(0.0)},
          Block{{35, 17, 5}, wake_box}};
}

integer blanking_in_wake(const Point& point) {
  return std::hypot(point[0], point[1]) < outer_radius - overlap ? 0 : 1;
}

}  // namespace

Grid cylinder_grid() {
  const auto parts = blocks();
  Grid grid;
  allocate_extents(grid, static_cast<integer>(parts.size()));
  for (integer b = 1; b <= grid.blocks; ++b) {
    const BlockSize& extents = parts[static_cast<std::size_t>(b - 1)].extents;
    grid.idim(b) = extents.i;
    grid.jdim(b) = extents.j;
    grid.kdim(b) = extents.k;
  }
  allocate_coordinates(grid);
  allocate_blanking(grid);

  std::int64_t at = 0;
  for (const auto& [extents, shape] : parts) {
    const bool in_wake = &shape == &parts.back().shape;
    for (integer k = 0; k < extents.k; ++k) {
      for (integer j = 0; j < extents.j; ++j) {
        for (integer i = 0; i < extents.i; ++i) {
          const Point point = shape(extents, i, j, k);
          ++at;
          for (std::size_t c = 0; c < 3; ++c) {
            grid.xyz(c + 1, at) = static_cast<float>(point[c]);
          }
          if (in_wake) grid.iblank(at) = blanking_in_wake(point);
        }
      }
    }
  }
  return grid;
}

}  // namespace p3dgrid::tool
