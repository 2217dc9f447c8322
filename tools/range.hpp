#pragma once

#include <algorithm>
#include <limits>

namespace p3dgrid::tool {

/// The smallest and largest of the included values.
struct Range {
  float low = std::numeric_limits<float>::infinity();
  float high = -std::numeric_limits<float>::infinity();

  void include(float value) {
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
