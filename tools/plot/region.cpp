#include <algorithm>
#include <cmath>

#include "options.hpp"
#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {
namespace {

/// Space around the region that the frame of a picture leaves, in largest extents of the region.
constexpr double margin_of_frame = 0.03;

double margin_of(const Region& region) {
  double largest = 0;
  for (std::size_t c = 0; c < 3; ++c) {
    const double extent = region.high[c] - region.low[c];
    if (std::isfinite(extent)) largest = std::max(largest, extent);
  }
  return margin_of_frame * largest;
}

/// A bit for each side of the region that a point is beyond by more than the slack.
std::uint8_t sides_beyond(const Region& region, double slack, const Vector& place) {
  unsigned sides = 0;
  for (unsigned c = 0; c < 3; ++c) {
    if (place[c] < region.low[c] - slack) sides |= 1U << (2 * c);
    if (place[c] > region.high[c] + slack) sides |= 2U << (2 * c);
  }
  return static_cast<std::uint8_t>(sides);
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
    surface.beyond.push_back(sides_beyond(region, slack, surface.place(p)));
  }
  surface.for_each_cell([&](const Cell& cell) {
    for (const std::size_t corner : cell.corners) hidden[corner] = 0;
  });
  for (std::size_t p = 0; p < hidden.size(); ++p) {
    const bool is_inside = surface.rows == 1 && surface.beyond[p] == 0;
    if (hidden[p] != 0 && !is_inside) surface.absent[p] = 1;
  }
}

}  // namespace p3dgrid::tool::plot
