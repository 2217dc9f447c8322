#pragma once

#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

/// A box in space; infinite in directions without a limit.
struct Region {
  Vector low{};
  Vector high{};

  [[nodiscard]] double extent(std::size_t coordinate) const {
    return high[coordinate] - low[coordinate];
  }
};

/// The bounding box of the surfaces as drawn. Coordinates in which it would be too thin to see are
/// enlarged, starting from the low corner.
struct Box : Region {
  Vector enlarged = {1, 1, 1};  ///< factors

  /// Where a coordinate is drawn.
  [[nodiscard]] double drawn(std::size_t coordinate, double value) const {
    return low[coordinate] + (value - low[coordinate]) * enlarged[coordinate];
  }
  /// The inverse of `drawn`.
  [[nodiscard]] double value(std::size_t coordinate, double place) const {
    return low[coordinate] + (place - low[coordinate]) / enlarged[coordinate];
  }

  [[nodiscard]] double diagonal() const { return std::hypot(extent(0), extent(1), extent(2)); }
  /// A corner by its number, 0 to 7: bit c set for the high end of coordinate c.
  [[nodiscard]] Vector corner(unsigned number) const {
    const auto end = [&](unsigned c) { return (number >> c & 1U) != 0 ? high[c] : low[c]; };
    return {end(0), end(1), end(2)};
  }
};

/// None if all points are absent.
[[nodiscard]] std::optional<Box> box_of(const std::vector<Surface>& surfaces);

/// Enlarges the two shorter extents of a long and thin box, and its points, by one factor.
void enlarge_thin(std::vector<Surface>& surfaces, Box& box);

/// The direction of a parallel projection, as three unit vectors.
struct View {
  Vector right{};
  Vector up{};
  Vector toward{};  ///< toward the eye
  /// Of a view along a coordinate axis: the coordinates that run to the right and up.
  std::optional<std::array<std::size_t, 2>> plane = {};
  /// The third one, if it varies within a surface, which is only nearly flat.
  std::optional<std::size_t> left_out = {};
};

/// Degrees: the azimuth is counted from x toward y, the elevation from the x-y plane toward z.
[[nodiscard]] View view_from(double azimuth, double elevation);

/// A view along the coordinate axis that is normal to every surface, exactly or nearly; none if
/// there is no such axis.
/// @param at_one_place  the surfaces must also lie in one plane
[[nodiscard]] std::optional<View> flat_view_of(const std::vector<Surface>& surfaces, const Box& box,
                                               bool at_one_place);

/// Maps places of the grid to pixels.
struct Projection {
  View view = {};
  double scale = 1;   ///< pixels per unit of length
  double left = 0;    ///< the left edge in grid units along `view.right`
  double top = 0;     ///< the top edge along `view.up`
  double middle = 0;  ///< of the box along `view.toward`; keeps depths small and thus exact

  [[nodiscard]] double x(const Vector& place) const {
    return scale * (dot(view.right, place) - left);
  }
  [[nodiscard]] double y(const Vector& place) const { return scale * (top - dot(view.up, place)); }
  /// Larger where it is nearer to the eye.
  [[nodiscard]] double depth(const Vector& place) const {
    return scale * (dot(view.toward, place) - middle);
  }
};

}  // namespace p3dgrid::tool::plot
