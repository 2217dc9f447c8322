#pragma once

#include <string>
#include <vector>

namespace p3dgrid::tool::plot {

/// Replaces each hyphen of a number by a minus sign, which is as wide as a digit.
[[nodiscard]] std::string with_minus_sign(std::string text);

/// Round numbers along an axis.
struct Ticks {
  double step = 1;
  std::vector<double> values;  ///< multiples of the step, all within the range

  /// The text of a tick, with the digits that distinguish it from its neighbours.
  [[nodiscard]] std::string label(double value) const;
};

/// The smallest of 1, 2 and 5 times a power of ten that is at least `least`, which is positive.
[[nodiscard]] double round_step(double least);

/// The multiples of `step` between `low` and `high`.
[[nodiscard]] Ticks multiples_between(double low, double high, double step);

/// About `most` ticks or fewer between `low` and `high`, which differ.
[[nodiscard]] Ticks ticks_between(double low, double high, double most);

}  // namespace p3dgrid::tool::plot
