#pragma once

#include <optional>
#include <string>

#include "grid_form.hpp"
#include "restart_file.hpp"

namespace p3dgrid {

/// Makes sure that a restart file of a layout with extents belongs to a grid: as many blocks, with
/// the same extents. Reads only the headers. Where they differ, the library's report goes to
/// standard output, and a Failure is thrown.
void require_agreement(const std::string& grid_path, const GridForm& grid,
                       const std::string& restart_path, const RestartForm& restart);

/// Makes sure that a restart file belongs to a grid, as far as its header tells. Returns the
/// extents of the grid when the layout holds none, for its body to be read by.
[[nodiscard]] std::optional<Extents> extents_to_read_by(const std::string& grid_path,
                                                        const GridForm& grid,
                                                        const std::string& restart_path,
                                                        const RestartForm& restart);

/// Reads a whole restart file that belongs to a grid: with extents of its own they must agree with
/// the grid's, without them it is read with the grid's. Throws a Failure as `require_agreement` and
/// `read_restart` do.
[[nodiscard]] Restart read_restart_of_grid(const std::string& grid_path, const GridForm& grid,
                                           const std::string& restart_path,
                                           const RestartForm& restart);

}  // namespace p3dgrid
