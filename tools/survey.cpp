#include "survey.hpp"

#include <cmath>

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

/// The same while the values are gone through, points counted from 0.
struct Running {
  std::int64_t low = -1;
  std::int64_t high = -1;
  float lowest = 0;
  float highest = 0;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;

  void add(float value, std::int64_t point) {
    if (!std::isfinite(value)) {
      ++(std::isnan(value) ? nan : infinite);
      return;
    }
    if (low < 0 || value < lowest) {
      lowest = value;
      low = point;
    }
    if (high < 0 || value > highest) {
      highest = value;
      high = point;
    }
  }
};

Place place_of(std::int64_t point, const Extents& extents) {
  std::size_t block = 0;
  while (point >= extents.points_of(block)) point -= extents.points_of(block++);
  const std::int64_t i = extents.i[block];
  const std::int64_t j = extents.j[block];
  return {static_cast<integer>(block + 1), static_cast<integer>(point % i + 1),
          static_cast<integer>(point / i % j + 1), static_cast<integer>(point / (i * j) + 1)};
}

std::optional<Extreme> extreme(float value, std::int64_t point, const Extents& extents) {
  if (point < 0) return std::nullopt;
  return Extreme{value, place_of(point, extents)};
}

}  // namespace

std::vector<Survey> survey(const mod_p3dgrid::allocatable<float, 2>& values,
                           const Extents& extents) {
  std::vector<Running> running(static_cast<std::size_t>(values.extent(1)));
  const float* value = values.data();
  for (std::int64_t point = 0; point < values.extent(2); ++point) {
    for (Running& variable : running) variable.add(*value++, point);
  }
  std::vector<Survey> surveys;
  for (const Running& variable : running) {
    surveys.push_back({extreme(variable.lowest, variable.low, extents),
                       extreme(variable.highest, variable.high, extents), variable.nan,
                       variable.infinite});
  }
  return surveys;
}

}  // namespace p3dgrid::tool
