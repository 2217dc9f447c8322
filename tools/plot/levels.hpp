#pragma once

#include <optional>
#include <vector>

#include "plot/canvas.hpp"
#include "plot/surface.hpp"
#include "plot/ticks.hpp"

namespace p3dgrid::tool::plot {

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

/// Bands for the values at all points that are not absent; none if no value is finite.
[[nodiscard]] std::optional<Levels> levels_of(const std::vector<Surface>& surfaces);

}  // namespace p3dgrid::tool::plot
