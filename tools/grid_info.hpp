#pragma once

#include <string>

#include "find.hpp"
#include "grid_file.hpp"

namespace p3dgrid::tool {

/// Shows a grid's blocks, extents, points, bounding box and blanking counts.
void print_grid_info(const std::string& path, const Found& found, const Grid& grid);

}  // namespace p3dgrid::tool
