#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.hpp"
#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

using Cut = CoordinatePlane;

/// Parses a list such as "x=0.5" or "x=0.5,y=-1e-3"; empty if the text is invalid.
[[nodiscard]] std::vector<Cut> cuts_in(const std::string& text);

/// The text that `cuts_in` parses.
[[nodiscard]] std::string describe(const Cut& cut);

/// Cuts the cells of a block that have no blanked corner; none if it has no cells there.
/// @param number  of the block, from 0
[[nodiscard]] std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                                 const Cut& cut);

}  // namespace p3dgrid::tool::plot
