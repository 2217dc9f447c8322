#pragma once

#include <optional>
#include <string>

#include "options.hpp"
#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

using Cut = CoordinatePlane;

/// The text that `coordinate_plane_in` parses.
[[nodiscard]] std::string describe(const Cut& cut);

/// Cuts the cells of a block that have no blanked corner; none if it has no cells there.
/// @param number  of the block, from 0
[[nodiscard]] std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                                 const Cut& cut);

}  // namespace p3dgrid::tool::plot
