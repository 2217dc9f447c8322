#include "plot/raster.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace p3dgrid::tool::plot {
namespace {

// Triangles that share an edge must leave no gap along it, however their sums are rounded.
constexpr double overlap = 1e-6;

// Lines are lifted by as much as a surface of slope 2 rises over half their width.
constexpr double lift_per_width = 1.0;

}  // namespace

/// The pixels of 0 to `count` - 1 whose middles lie between two places.
Raster::Rows Raster::pixels_between(double low, double high, int count) {
  return {static_cast<int>(std::clamp<double>(std::ceil(low - 0.5), 0, count)),
          static_cast<int>(std::clamp<double>(std::floor(high - 0.5), -1, count - 1))};
}

Raster::Raster(int width, int height)
    : width_(fineness * width),
      height_(fineness * height),
      depths_(at(0, height_), -std::numeric_limits<float>::infinity()),
      colours_(at(0, height_), 0) {}

Raster::Plane::Plane(const Vertex& a, const Vertex& b, const Vertex& c)
    : depths{a.depth, b.depth, c.depth}, values{a.value, b.value, c.value} {
  const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
  empty = std::abs(area) < 1e-12;
  if (empty) return;
  const auto weight = [area](const Vertex& from, const Vertex& to) {
    return Weight{(from.y - to.y) / area, (to.x - from.x) / area,
                  (from.x * to.y - to.x * from.y) / area};
  };
  weights[0] = weight(b, c);
  weights[1] = weight(c, a);
  weights[2] = weight(a, b);
}

Raster::Rows Raster::Plane::span(int y, int width) const {
  double first = 0;
  double last = width - 1;
  for (const Weight& weight : weights) {
    const double at_left = weight.by_x * 0.5 + weight.by_y * (y + 0.5) + weight.rest;
    if (weight.by_x > 0) first = std::max(first, -at_left / weight.by_x - overlap);
    if (weight.by_x < 0) last = std::min(last, -at_left / weight.by_x + overlap);
    if (weight.by_x == 0 && at_left < -overlap) return {0, -1};
  }
  if (first > last) return {0, -1};
  return {static_cast<int>(std::ceil(first)), static_cast<int>(std::floor(last))};
}

double Raster::Plane::weighed(const double (&of_corners)[3], int x, int y) const {
  double sum = 0;
  for (std::size_t corner = 0; corner < 3; ++corner) {
    const Weight& weight = weights[corner];
    sum += of_corners[corner] * (weight.by_x * (x + 0.5) + weight.by_y * (y + 0.5) + weight.rest);
  }
  return sum;
}

Raster::Rows Raster::rows_of(const Vertex& a, const Vertex& b, const Vertex& c) const {
  const auto [low, high] = std::minmax({a.y, b.y, c.y});
  return pixels_between(low - overlap, high + overlap, height_);
}

void Raster::dot(int x, int y, double depth, Colour colour) {
  const std::size_t pixel = at(x, y);
  const auto lifted = static_cast<float>(depth);
  if (lifted <= depths_[pixel]) return;
  depths_[pixel] = lifted;
  colours_[pixel] = opaque | colour;
}

// Goes pixel by pixel along the direction in which the line is longer, and puts a row of pixels
// across it each time.
void Raster::line(const Vertex& from, const Vertex& to, double line_width, Colour colour) {
  const double lift = lift_per_width * line_width;
  const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
  const auto along = [&](const Vertex& v) { return steep ? v.y : v.x; };
  const auto across = [&](const Vertex& v) { return steep ? v.x : v.y; };
  const Vertex& start = along(from) <= along(to) ? from : to;
  const Vertex& end = along(from) <= along(to) ? to : from;
  const double length = along(end) - along(start);
  const double slope = length > 0 ? (across(end) - across(start)) / length : 0;
  const double rise = length > 0 ? (end.depth - start.depth) / length : 0;
  const double half = line_width / 2 * std::hypot(1, slope);
  // Half the width beyond both ends, so that lines meet.
  const auto [first, last] = pixels_between(along(start) - line_width / 2,
                                            along(end) + line_width / 2, steep ? height_ : width_);
  for (int step = first; step <= last; ++step) {
    const double done = std::clamp(step + 0.5 - along(start), 0.0, length);
    const double middle = across(start) + slope * done;
    const double depth = start.depth + rise * done + lift;
    // A middle on the far limit is not across: the number of pixels depends on the width alone.
    const auto [low, high] =
        pixels_between(middle - half, middle + half - overlap, steep ? width_ : height_);
    for (int side = low; side <= high; ++side) {
      steep ? dot(side, step, depth, colour) : dot(step, side, depth, colour);
    }
  }
}

std::vector<std::uint32_t> Raster::reduced() const {
  std::vector<std::uint32_t> picture;
  picture.reserve(static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()));
  for (int row = 0; row < height(); ++row) {
    for (int column = 0; column < width(); ++column) {
      std::array<std::uint32_t, 4> sums{};
      for (int n = 0; n < fineness * fineness; ++n) {
        const std::uint32_t fine =
            colours_[at(column * fineness + n % fineness, row * fineness + n / fineness)];
        for (unsigned part = 0; part < 4; ++part) sums[part] += fine >> (8 * part) & 0xffU;
      }
      std::uint32_t pixel = 0;
      for (unsigned part = 0; part < 4; ++part) {
        pixel |= (sums[part] + fineness * fineness / 2) / (fineness * fineness) << (8 * part);
      }
      picture.push_back(pixel);
    }
  }
  return picture;
}

}  // namespace p3dgrid::tool::plot
