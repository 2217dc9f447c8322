#pragma once

#include <algorithm>
#include <limits>

namespace p3dgrid::tool {

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
