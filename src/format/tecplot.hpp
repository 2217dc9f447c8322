#pragma once

#include <string>
#include <vector>

#include "p3dgrid/form.hpp"

/// The lines of a Tecplot text file that are not values.
namespace p3dgrid::tecplot {

/// The names of the columns. Known quirk: the line begins with a blank, and "IBLANK" has none
/// before it.
[[nodiscard]] std::string variables_line(const std::vector<std::string>& names, bool iblank);

/// The line before the points of a zone.
/// @param zone  number of the zone, from 1
[[nodiscard]] std::string zone_line(std::int32_t zone, const BlockExtents& extents);

}  // namespace p3dgrid::tecplot
