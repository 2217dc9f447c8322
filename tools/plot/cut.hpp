#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

/// A plane on which one coordinate is constant.
struct Cut {
  std::size_t coordinate = 0;  ///< 0 for x, 1 for y, 2 for z
  double value = 0;
};

/// Parses a list such as "x=0.5" or "x=0.5,y=-1e-3"; empty if the text is invalid.
[[nodiscard]] std::vector<Cut> cuts_in(const std::string& text);

/// The text that `cuts_in` parses.
[[nodiscard]] std::string describe(const Cut& cut);

/// Cuts the cells of a block that have no blanked corner; none if it has no cells there.
/// @param number  of the block, from 0
[[nodiscard]] std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                                 const Cut& cut);

}  // namespace p3dgrid::tool::plot
