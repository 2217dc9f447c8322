#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/canvas.hpp"
#include "plot/surface.hpp"

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

/// The colour for a share from 0 to 1: dark violet over green to yellow, perceptually uniform and
/// monotonic in lightness.
[[nodiscard]] Colour map_colour(double share);

/// The bands of a filled contour, each of one colour.
struct Levels {
  double smallest = 0;  ///< of the finite values
  double largest = 0;
  bool all_finite = true;  ///< false if a value is infinite or NaN
  double low = 0;          ///< lower end of the first band
  double step = 1;
  Ticks ticks;  ///< at limits of bands
  std::vector<Colour> colours;

  [[nodiscard]] double high() const { return low + step * static_cast<double>(colours.size()); }
  [[nodiscard]] Colour colour_of(double value) const;
};

/// Bands for the values at all points that are not absent, or of all cells; none if no value is
/// finite.
[[nodiscard]] std::optional<Levels> levels_of(const std::vector<Surface>& surfaces);

}  // namespace p3dgrid::tool::plot
