#pragma once

#include <string>

#include "find.hpp"
#include "restart_file.hpp"
#include "wrong_place.hpp"

namespace p3dgrid::tool {

/// A grid, and a restart file that belongs to it as far as their headers and lengths tell.
struct Case {
  Found grid;
  Found restart = {};
  Extents extents = {};  ///< of the grid
};

/// How far to look: at what has been stated too, or only at what has been left open.
enum class Look { where_needed, everywhere };

/// Finds out the forms of a grid and of a restart file, and makes sure that the two belong
/// together. Where they do not, the library's report of blocks and extents goes to standard output,
/// and a Failure is thrown; Failures of `find_grid` and `find_restart` come as they are, but for a
/// file that is of the other kind: of that the Failure says how the command is written.
[[nodiscard]] Case find_case(const std::string& grid_path, const StatedGridForm& grid,
                             const std::string& restart_path, const StatedRestartForm& restart,
                             const Usage& usage, Look look = Look::where_needed);

/// Reads a whole restart file that belongs to a grid. Throws a Failure as `find_case` and
/// `read_restart` do.
[[nodiscard]] Restart read_restart_of_grid(const std::string& restart_path, const Case& found);

}  // namespace p3dgrid::tool
