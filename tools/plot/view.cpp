#include "plot/view.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "plot/scale.hpp"

namespace p3dgrid::tool::plot {
namespace {

// Equal coordinates may differ in their last digits in single precision.
constexpr double flatness = 1e-5;

// A surface is nearly flat if it is this much thinner than wide.
constexpr double near_flatness = 0.01;
constexpr double noise = 1e-6;

// Width of a box over its length: a thinner one is enlarged, to no more than the second.
constexpr double thinnest = 0.01;
constexpr double shown_width = 0.25;

Range range_of(const Surface& surface, std::size_t coordinate) {
  Range range;
  for (std::size_t p = 0; p < surface.points.size(); ++p) {
    if (surface.absent[p] == 0) range.include(surface.points[p][coordinate]);
  }
  return range;
}

}  // namespace

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

std::optional<View> flat_view_of(const std::vector<Surface>& surfaces, const Box& box,
                                 bool at_one_place) {
  const auto near_limit = [&](std::size_t c) {
    return near_flatness * std::min(box.extent((c + 1) % 3), box.extent((c + 2) % 3));
  };
  std::optional<std::size_t> flattest;
  double least = INFINITY;
  const double limit = flatness * box.diagonal();
  for (const std::size_t coordinate : {2U, 1U, 0U}) {
    double most = at_one_place ? box.extent(coordinate) : 0;
    for (const Surface& surface : surfaces) {
      const Range range = range_of(surface, coordinate);
      if (!range.empty()) most = std::max(most, double{range.high} - double{range.low});
    }
    if (most > std::max(limit, near_limit(coordinate)) || most >= least) continue;
    flattest = coordinate;
    least = most;
  }
  if (!flattest) return std::nullopt;
  const std::size_t right = *flattest == 0 ? 1 : 0;
  const std::size_t up = *flattest == 2 ? 1 : 2;
  View view;
  view.right[right] = 1;
  view.up[up] = 1;
  view.toward = cross(view.right, view.up);
  view.plane = {right, up};
  if (least > limit) view.left_out = flattest;
  return view;
}

void enlarge_thin(std::vector<Surface>& surfaces, Box& box) {
  std::array<std::size_t, 3> order = {0, 1, 2};
  std::ranges::sort(order,
                    [&](std::size_t a, std::size_t b) { return box.extent(a) > box.extent(b); });
  const auto [longest, second, third] = order;
  const double size = std::max(std::abs(box.low[second]), std::abs(box.high[second]));
  if (box.extent(second) <= noise * size) return;
  if (box.extent(second) >= thinnest * box.extent(longest)) return;
  // A round factor that does not exceed the wanted one.
  const double wanted = shown_width * box.extent(longest) / box.extent(second);
  const double factor = 1 / round_step(1 / wanted);
  for (const std::size_t c : {second, third}) {
    box.enlarged[c] = factor;
    for (Surface& surface : surfaces) {
      for (std::size_t p = 0; p < surface.points.size(); ++p) {
        float& value = surface.points[p][c];
        if (surface.absent[p] == 0) value = static_cast<float>(box.drawn(c, value));
      }
    }
    box.high[c] = box.drawn(c, box.high[c]);
  }
}

}  // namespace p3dgrid::tool::plot
