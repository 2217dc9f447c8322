#include "plot/view.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "plot/ticks.hpp"
#include "range.hpp"

namespace p3dgrid::tool::plot {
namespace {

// Coordinates in single precision that are meant to be the same may differ by a few last digits.
constexpr double flatness = 1e-5;
constexpr double noise = 1e-6;

// Of the width of a box, in its length: what is thinner is enlarged, to no more than this.
constexpr double thinnest = 0.01;
constexpr double shown_width = 0.25;

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
  std::optional<std::size_t> flattest;
  double least = flatness * box.diagonal();
  for (const std::size_t coordinate : {std::size_t{2}, std::size_t{1}, std::size_t{0}}) {
    double most = 0;
    for (const Surface& surface : surfaces) {
      const Range range = range_of(surface, coordinate);
      if (!range.empty()) most = std::max(most, double{range.high} - double{range.low});
    }
    if (most > least || (flattest && most == least)) continue;
    flattest = coordinate;
    least = most;
  }
  return flattest ? std::optional(view_along(*flattest)) : std::nullopt;
}

void enlarge_thin(std::vector<Surface>& surfaces, Box& box) {
  const auto extent = [&](std::size_t c) { return box.high[c] - box.low[c]; };
  std::array<std::size_t, 3> order = {0, 1, 2};
  std::ranges::sort(order, [&](std::size_t a, std::size_t b) { return extent(a) > extent(b); });
  const auto [longest, second, third] = order;
  const double size = std::max(std::abs(box.low[second]), std::abs(box.high[second]));
  if (extent(second) <= noise * size) return;
  if (extent(second) >= thinnest * extent(longest)) return;
  // A round factor, and no more than is wanted.
  const double wanted = shown_width * extent(longest) / extent(second);
  const double factor = 1 / round_step(1 / wanted);
  for (const std::size_t c : {second, third}) box.enlarged[c] = factor;
  for (Surface& surface : surfaces) {
    for (std::size_t p = 0; p < surface.points.size(); ++p) {
      if (surface.absent[p] != 0) continue;
      Point& point = surface.points[p];
      for (const std::size_t c : {second, third}) {
        point[c] = static_cast<float>(box.drawn(c, point[c]));
      }
    }
  }
  for (const std::size_t c : {second, third}) box.high[c] = box.drawn(c, box.high[c]);
}

}  // namespace p3dgrid::tool::plot
