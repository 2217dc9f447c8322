#pragma once

#include <algorithm>
#include <array>
#include <limits>

namespace p3dgrid::tool {

using Vector = std::array<double, 3>;

[[nodiscard]] inline Vector operator+(const Vector& a, const Vector& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

[[nodiscard]] inline Vector operator-(const Vector& a, const Vector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

[[nodiscard]] inline double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

[[nodiscard]] inline Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The smallest and largest of the included values.
struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  void include(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  void include(const Range& other) {
    low = std::min(low, other.low);
    high = std::max(high, other.high);
  }
  [[nodiscard]] bool empty() const { return low > high; }
};

}  // namespace p3dgrid::tool
