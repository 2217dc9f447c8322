#include "plot/raster.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace p3dgrid::tool::plot {
namespace {

constexpr std::uint32_t opaque = 0xff000000;

// Closes gaps between triangles that share an edge, which rounding could open.
constexpr double overlap = 1e-6;

// A line of this lift is visible on a surface of slope 2.
constexpr double lift_per_width = 1.0;

struct Pixels {
  int first;
  int last;
};

/// The pixels of 0 to `count` - 1 whose centres lie between two places.
Pixels pixels_between(double low, double high, int count) {
  return {static_cast<int>(std::clamp<double>(std::ceil(low - 0.5), 0, count)),
          static_cast<int>(std::clamp<double>(std::floor(high - 0.5), -1, count - 1))};
}

/// The barycentric coordinate of one corner, as a linear function of the pixel.
struct Weight {
  double by_x, by_y, rest;

  [[nodiscard]] double at(int x, int y) const { return by_x * (x + 0.5) + by_y * (y + 0.5) + rest; }
};
using Weights = std::array<Weight, 3>;

/// Pixels of a row whose centres are in the triangle.
Pixels pixels_in(const Weights& weights, int y, int width) {
  double first = 0;
  double last = width - 1;
  for (const Weight& weight : weights) {
    const double at_left = weight.at(0, y);
    if (weight.by_x > 0) first = std::max(first, -at_left / weight.by_x - overlap);
    if (weight.by_x < 0) last = std::min(last, -at_left / weight.by_x + overlap);
    if (weight.by_x == 0 && at_left < -overlap) return {0, -1};
  }
  if (first > last) return {0, -1};
  return {static_cast<int>(std::ceil(first)), static_cast<int>(std::floor(last))};
}

}  // namespace

Raster::Raster(int width, int height)
    : width_(fineness * width),
      height_(fineness * height),
      depths_(index(0, height_), -std::numeric_limits<float>::infinity()),
      colours_(depths_.size(), 0) {}

std::uint32_t* Raster::visible(int x, int y, double depth) {
  const std::size_t pixel = index(x, y);
  const auto rounded = static_cast<float>(depth);
  if (rounded <= depths_[pixel]) return nullptr;
  depths_[pixel] = rounded;
  return &colours_[pixel];
}

void Raster::triangle(const Vertex& a, const Vertex& b, const Vertex& c,
                      const std::function<Colour(double value)>& colour_of) {
  const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
  if (std::abs(area) < 1e-12) return;
  const auto weight = [area](const Vertex& from, const Vertex& to) {
    return Weight{(from.y - to.y) / area, (to.x - from.x) / area,
                  (from.x * to.y - to.x * from.y) / area};
  };
  const Weights weights = {weight(b, c), weight(c, a), weight(a, b)};
  const auto interpolated = [&](double Vertex::*quantity, int x, int y) {
    return a.*quantity * weights[0].at(x, y) + b.*quantity * weights[1].at(x, y) +
           c.*quantity * weights[2].at(x, y);
  };
  const auto [low, high] = std::minmax({a.y, b.y, c.y});
  const auto [top, bottom] = pixels_between(low - overlap, high + overlap, height_);
  for (int y = top; y <= bottom; ++y) {
    const auto [left, right] = pixels_in(weights, y, width_);
    for (int x = left; x <= right; ++x) {
      std::uint32_t* const pixel = visible(x, y, interpolated(&Vertex::depth, x, y));
      if (pixel != nullptr) *pixel = opaque | colour_of(interpolated(&Vertex::value, x, y));
    }
  }
}

// Steps along the direction in which the line is longer, and draws a row of pixels across it.
void Raster::line(const Vertex& from, const Vertex& to, double line_width, Colour colour) {
  const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
  const auto along = [&](const Vertex& v) { return steep ? v.y : v.x; };
  const auto across = [&](const Vertex& v) { return steep ? v.x : v.y; };
  const bool forward = along(from) <= along(to);
  const Vertex& start = forward ? from : to;
  const Vertex& end = forward ? to : from;
  const double length = along(end) - along(start);
  const double slope = length > 0 ? (across(end) - across(start)) / length : 0;
  const double rise = length > 0 ? (end.depth - start.depth) / length : 0;
  const double half = line_width / 2 * std::hypot(1, slope);
  // Extended by half the width at both ends, so that lines meet.
  const auto [first, last] = pixels_between(along(start) - line_width / 2,
                                            along(end) + line_width / 2, steep ? height_ : width_);
  for (int step = first; step <= last; ++step) {
    const double done = std::clamp(step + 0.5 - along(start), 0.0, length);
    const double middle = across(start) + slope * done;
    const double depth = start.depth + rise * done + lift_per_width * line_width;
    // A centre on the far limit is excluded: the number of pixels depends on the width alone.
    const auto [low, high] =
        pixels_between(middle - half, middle + half - overlap, steep ? width_ : height_);
    for (int side = low; side <= high; ++side) {
      std::uint32_t* pixel = steep ? visible(side, step, depth) : visible(step, side, depth);
      if (pixel != nullptr) *pixel = opaque | colour;
    }
  }
}

std::vector<std::uint32_t> Raster::reduced() const {
  constexpr std::uint32_t area = fineness * fineness;
  const auto mean = [this](int left, int top, unsigned shift) {
    std::uint32_t sum = 0;
    for (int y = top; y < top + fineness; ++y) {
      for (int x = left; x < left + fineness; ++x) sum += colours_[index(x, y)] >> shift & 0xffU;
    }
    return (sum + area / 2) / area << shift;
  };
  std::vector<std::uint32_t> picture;
  picture.reserve(colours_.size() / area);
  for (int y = 0; y < height_; y += fineness) {
    for (int x = 0; x < width_; x += fineness) {
      picture.push_back(mean(x, y, 0) | mean(x, y, 8) | mean(x, y, 16) | mean(x, y, 24));
    }
  }
  return picture;
}

}  // namespace p3dgrid::tool::plot
