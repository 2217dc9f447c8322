#pragma once

#include <array>
#include <optional>
#include <vector>

#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

using Vector = std::array<double, 3>;

[[nodiscard]] inline double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

[[nodiscard]] inline Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The corners of the box around the points shown, as they are drawn. Of what would be too thin to
/// see, coordinates are enlarged from the low corner on.
struct Box {
  Vector low{};
  Vector high{};
  Vector enlarged = {1, 1, 1};  ///< by so much

  /// Where a coordinate is drawn, and the coordinate that is drawn there.
  [[nodiscard]] double drawn(std::size_t coordinate, double value) const {
    return low[coordinate] + (value - low[coordinate]) * enlarged[coordinate];
  }
  [[nodiscard]] double value(std::size_t coordinate, double place) const {
    return low[coordinate] + (place - low[coordinate]) / enlarged[coordinate];
  }

  [[nodiscard]] double diagonal() const;
  /// A corner by its number, 0 to 7: bit c set for the high end of coordinate c.
  [[nodiscard]] Vector corner(unsigned number) const;
};

/// Nothing when no point is there.
[[nodiscard]] std::optional<Box> box_of(const std::vector<Surface>& surfaces);

/// Enlarges the coordinates of points in a box so long that its width would not show, by one factor
/// for all that are thin, so that it does; leaves others as they are.
void enlarge_thin(std::vector<Surface>& surfaces, Box& box);

/// From where the surfaces are looked at, without perspective. The three are unit vectors.
struct View {
  Vector right{};
  Vector up{};
  Vector toward{};  ///< toward the eye
  /// Of a view along a coordinate axis: the coordinates that run to the right and up.
  std::optional<std::array<std::size_t, 2>> plane;
};

/// Degrees: the azimuth is counted from x toward y, the elevation from the x-y plane toward z.
[[nodiscard]] View view_from(double azimuth, double elevation);

/// The view along a coordinate axis in which every surface is seen unforeshortened, because that
/// coordinate is the same all over it, or varies less than others; nothing where there is none.
[[nodiscard]] std::optional<View> flat_view_of(const std::vector<Surface>& surfaces,
                                               const Box& box);

}  // namespace p3dgrid::tool::plot
