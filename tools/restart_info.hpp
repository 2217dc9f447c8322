#pragma once

#include <string>

#include "grid_form.hpp"
#include "restart_form.hpp"

namespace p3dgrid {

/// Shows a restart file's header values, blocks and variables. With extents of its own the file is
/// read whole, and the ranges of its variables are shown too.
void print_restart_info(const std::string& path, const RestartForm& form);

/// The same of a file that must belong to a grid, and always with ranges.
void print_restart_info(const std::string& path, const RestartForm& form,
                        const std::string& grid_path, const GridForm& grid);

}  // namespace p3dgrid
