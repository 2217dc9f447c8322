#pragma once

#include <optional>

#include "options.hpp"
#include "plot/surface.hpp"

namespace p3dgrid::tool::plot {

/// Cuts the cells of a block that have no blanked corner; none if it has no cells there.
/// @param number  of the block, from 0
[[nodiscard]] std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                                 const CoordinatePlane& cut);

}  // namespace p3dgrid::tool::plot
