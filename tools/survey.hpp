#pragma once

#include <MOD_P3DReader.hpp>
#include <cstdint>
#include <optional>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// Where a point is, all counted from 1.
struct Place {
  mod_p3dgrid::integer block = 1;
  mod_p3dgrid::integer i = 1;
  mod_p3dgrid::integer j = 1;
  mod_p3dgrid::integer k = 1;
};

/// The smallest or largest value of a variable; the first one in file order.
struct Extreme {
  float value = 0;
  Place place;
};

/// What is reported of one variable at all points.
struct Survey {
  std::optional<Extreme> low;  ///< of the finite values; none where there is no such
  std::optional<Extreme> high;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;
};

/// Surveys each row of (variable, point).
[[nodiscard]] std::vector<Survey> survey(const mod_p3dgrid::allocatable<float, 2>& values,
                                         const Extents& extents);

}  // namespace p3dgrid::tool
