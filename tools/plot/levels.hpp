#pragma once

#include <vector>

#include "plot/colours.hpp"
#include "plot/surface.hpp"
#include "plot/ticks.hpp"

namespace p3dgrid::tool::plot {

/// The bands of values that a filled contour shows, each in one colour.
struct Levels {
  double smallest = 0;  ///< of the values
  double largest = 0;
  double low = 0;  ///< lower end of the first band
  double step = 1;
  Ticks ticks;  ///< on band limits
  std::vector<Colour> colours;

  [[nodiscard]] double high() const { return low + step * static_cast<double>(colours.size()); }
  [[nodiscard]] Colour colour_of(double value) const;
};

/// Bands for the finite values on the surfaces where points are. Nothing when there are none.
[[nodiscard]] std::optional<Levels> levels_of(const std::vector<Surface>& surfaces);

/// True when a point of the surfaces has a value that is infinite or no number.
[[nodiscard]] bool lacks_values(const std::vector<Surface>& surfaces);

}  // namespace p3dgrid::tool::plot
