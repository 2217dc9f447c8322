#pragma once

#include <string>

#include "grid_form.hpp"

namespace p3dgrid {

/// Shows a grid's blocks, extents, points, bounding box and blanking counts.
void print_grid_info(const std::string& path, const GridForm& form);

}  // namespace p3dgrid
