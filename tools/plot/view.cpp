#include "plot/view.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "range.hpp"

namespace p3dgrid::plot {
namespace {

// Coordinates in single precision that are meant to be the same may differ by a few last digits.
constexpr double flatness = 1e-5;

/// Range of one coordinate over a surface.
Range range_of(const Surface& surface, std::size_t coordinate) {
  Range range;
  for (std::size_t p = 0; p < surface.points.size(); ++p) {
    if (surface.absent[p] == 0) range.include(surface.points[p][coordinate]);
  }
  return range;
}

Vector axis(std::size_t coordinate) {
  Vector unit{};
  unit[coordinate] = 1;
  return unit;
}

View view_along(std::size_t coordinate) {
  const std::size_t right = coordinate == 0 ? 1 : 0;
  const std::size_t up = coordinate == 2 ? 1 : 2;
  View view{axis(right), axis(up), cross(axis(right), axis(up)), {}};
  view.plane = {right, up};
  return view;
}

}  // namespace

double Box::diagonal() const {
  return std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
}

Vector Box::corner(unsigned number) const {
  Vector place{};
  for (std::size_t c = 0; c < 3; ++c) place[c] = (number >> c & 1U) != 0 ? high[c] : low[c];
  return place;
}

std::optional<Box> box_of(const std::vector<Surface>& surfaces) {
  Box box;
  for (std::size_t c = 0; c < 3; ++c) {
    Range range;
    for (const Surface& surface : surfaces) range.include(range_of(surface, c));
    if (range.empty()) return std::nullopt;
    box.low[c] = range.low;
    box.high[c] = range.high;
  }
  return box;
}

View view_from(double azimuth, double elevation) {
  const double a = azimuth * std::numbers::pi / 180;
  const double e = elevation * std::numbers::pi / 180;
  View view;
  view.toward = {std::cos(e) * std::cos(a), std::cos(e) * std::sin(a), std::sin(e)};
  view.right = {-std::sin(a), std::cos(a), 0};
  view.up = cross(view.toward, view.right);
  return view;
}

std::optional<View> flat_view_of(const std::vector<Surface>& surfaces, const Box& box) {
  for (const std::size_t coordinate : {std::size_t{2}, std::size_t{1}, std::size_t{0}}) {
    const auto flat = [&](const Surface& surface) {
      const Range range = range_of(surface, coordinate);
      return range.empty() || double{range.high} - double{range.low} <= flatness * box.diagonal();
    };
    if (std::ranges::all_of(surfaces, flat)) return view_along(coordinate);
  }
  return std::nullopt;
}

}  // namespace p3dgrid::plot
