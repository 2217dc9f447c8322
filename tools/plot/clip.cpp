#include "plot/clip.hpp"

#include <algorithm>
#include <array>

namespace p3dgrid::tool::plot {
namespace {

/// The distance of a point from each side of the box, negative outside the box.
std::array<double, 6> depths_in(const Box& box, const Vector& place) {
  std::array<double, 6> depths{};
  for (std::size_t c = 0; c < 3; ++c) {
    depths[2 * c] = place[c] - box.low[c];
    depths[2 * c + 1] = box.high[c] - place[c];
  }
  return depths;
}

Corner between(const Corner& from, const Corner& to, double share) {
  const auto mix = [share](double a, double b) { return a + share * (b - a); };
  Corner corner;
  for (std::size_t c = 0; c < 3; ++c) corner.place[c] = mix(from.place[c], to.place[c]);
  const Vertex& a = from.vertex;
  const Vertex& b = to.vertex;
  corner.vertex = {mix(a.x, b.x), mix(a.y, b.y), mix(a.depth, b.depth), mix(a.value, b.value)};
  return corner;
}

}  // namespace

// Clips the polygon at each side of the box in turn.
std::vector<Corner> clipped(std::vector<Corner> polygon, const Box& box) {
  for (std::size_t side = 0; side < 6; ++side) {
    std::vector<Corner> rest;
    for (std::size_t n = 0; n < polygon.size(); ++n) {
      const Corner& from = polygon[n];
      const Corner& to = polygon[(n + 1) % polygon.size()];
      const double a = depths_in(box, from.place)[side];
      const double b = depths_in(box, to.place)[side];
      if (a >= 0) rest.push_back(from);
      if ((a >= 0) != (b >= 0)) rest.push_back(between(from, to, a / (a - b)));
    }
    polygon = std::move(rest);
  }
  return polygon;
}

std::optional<std::pair<Vertex, Vertex>> clipped(const Corner& from, const Corner& to,
                                                 const Box& box) {
  const auto depths_from = depths_in(box, from.place);
  const auto depths_to = depths_in(box, to.place);
  double first = 0;
  double last = 1;
  for (std::size_t side = 0; side < 6; ++side) {
    const double a = depths_from[side];
    const double b = depths_to[side];
    if (a < 0 && b < 0) return std::nullopt;
    if (a < 0) first = std::max(first, a / (a - b));
    if (b < 0) last = std::min(last, a / (a - b));
  }
  if (first >= last) return std::nullopt;
  return std::pair(between(from, to, first).vertex, between(from, to, last).vertex);
}

}  // namespace p3dgrid::tool::plot
