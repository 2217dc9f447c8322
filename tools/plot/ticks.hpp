#pragma once

#include <string>
#include <vector>

namespace p3dgrid::tool::plot {

/// The text of a number with a minus sign as long as a digit in place of each hyphen.
[[nodiscard]] std::string with_minus_sign(std::string text);

/// Round numbers along an axis.
struct Ticks {
  double step = 1;
  std::vector<double> values;  ///< multiples of the step, all within the range

  /// The digits that tell this tick from its neighbours.
  [[nodiscard]] std::string label(double value) const;
};

/// The smallest of 1, 2 and 5 times a power of ten that is not below `least`, which is positive.
[[nodiscard]] double round_step(double least);

/// The multiples of `step` between `low` and `high`.
[[nodiscard]] Ticks multiples_between(double low, double high, double step);

/// At most about `most` ticks between `low` and `high`, which differ.
[[nodiscard]] Ticks ticks_between(double low, double high, double most);

}  // namespace p3dgrid::tool::plot
