#include "plot/clip.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "options.hpp"

namespace p3dgrid::tool::plot {
namespace {

/// The distance of a point from each side of the box, negative outside the box.
std::array<double, 6> depths_in(const Region& box, const Vector& place) {
  std::array<double, 6> depths{};
  for (std::size_t c = 0; c < 3; ++c) {
    depths[2 * c] = place[c] - box.low[c];
    depths[2 * c + 1] = box.high[c] - place[c];
  }
  return depths;
}

/// Space around the region that the frame of a picture leaves, in largest extents of the region.
constexpr double margin_of_frame = 0.03;

double margin_of(const Region& region) {
  double largest = 0;
  for (std::size_t c = 0; c < 3; ++c) {
    if (std::isfinite(region.extent(c))) largest = std::max(largest, region.extent(c));
  }
  return margin_of_frame * largest;
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

std::optional<Region> region_in(const std::string& text) {
  Region region = {{-INFINITY, -INFINITY, -INFINITY}, {INFINITY, INFINITY, INFINITY}};
  const std::vector<std::string> ranges = entries_in(text);
  if (ranges.size() < 2 || ranges.size() > 3) return std::nullopt;
  for (std::size_t c = 0; c < ranges.size(); ++c) {
    const std::size_t colon = ranges[c].find(':');
    if (colon == std::string::npos) return std::nullopt;
    const auto low = real_in(ranges[c].substr(0, colon));
    const auto high = real_in(ranges[c].substr(colon + 1));
    if (!low || !high || *low >= *high) return std::nullopt;
    region.low[c] = *low;
    region.high[c] = *high;
  }
  return region;
}

void confine(Surface& surface, const Region& region) {
  std::vector<char> hidden(surface.points.size(), 1);
  const double slack = margin_of(region);
  for (std::size_t p = 0; p < surface.points.size(); ++p) {
    const auto depths = depths_in(region, surface.place(p));
    unsigned sides = 0;
    for (unsigned side = 0; side < 6; ++side) {
      if (depths[side] < -slack) sides |= 1U << side;
    }
    surface.beyond.push_back(static_cast<std::uint8_t>(sides));
  }
  surface.for_each_cell([&](const Cell& cell) {
    for (const std::size_t corner : cell.corners) hidden[corner] = 0;
  });
  for (std::size_t p = 0; p < hidden.size(); ++p) {
    const bool is_inside = surface.rows == 1 && surface.beyond[p] == 0;
    if (hidden[p] != 0 && !is_inside) surface.absent[p] = 1;
  }
}

// Clips the polygon at each side of the box in turn.
std::vector<Corner> clipped(std::vector<Corner> polygon, const Region& box) {
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
                                                 const Region& box) {
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
