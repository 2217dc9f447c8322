#include "agreement.hpp"

#include "console.hpp"
#include "failure.hpp"
#include "grid_file.hpp"
#include "paths.hpp"
#include "process.hpp"
#include "restart_header.hpp"
#include "table.hpp"
#include "wrong_place.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

/// The two files to compare.
struct Pair {
  const std::string& grid_path;
  const GridForm& grid;
  const std::string& restart_path;
  const RestartForm& restart;

  [[nodiscard]] std::string disagreement() const {
    return restart_path + ": does not belong to " + grid_path;
  }
};

/// Prints the library's report of how the two differ, and throws.
void report_by_library(const Pair& pair) {
  const LibraryMessages shown(print_result);
  try {
    // Counts of another file would be taken for this one's room.
    mod_p3dgrid::nfvar.deallocate();
    mod_p3dgrid::checkp3drstrtheader(
        name_for(pair.grid_path, pair.grid.coding.byte_order),
        static_cast<integer>(pair.grid.coding.encoding),
        name_for(pair.restart_path, pair.restart.coding.byte_order),
        static_cast<integer>(pair.restart.coding.encoding),
        logical(pair.restart.coding.precision == Precision::double_precision),
        static_cast<integer>(pair.restart.layout), logical(pair.grid.multiblock));
  } catch (const Halt&) {
    throw Failure(ExitStatus::mismatch, pair.disagreement());
  }
}

/// For pairs of which the library cannot be told: one begins with a block count and the other does
/// not, or the layout is one whose extents it does not hand over.
void require_same_extents(const Pair& pair, const Extents& grid, const Extents& restart) {
  if (grid.blocks() != restart.blocks()) {
    throw Failure(ExitStatus::mismatch, pair.disagreement() + ": it holds " +
                                            counted(restart.blocks(), "block") + ", the grid " +
                                            std::to_string(grid.blocks()));
  }
  for (std::size_t b = 0; b < grid.i.size(); ++b) {
    const std::string of_grid = grid.text_of(b);
    const std::string of_restart = restart.text_of(b);
    if (of_grid == of_restart) continue;
    throw Failure(ExitStatus::mismatch, pair.disagreement() + ": its block " +
                                            std::to_string(b + 1) + " is " + of_restart +
                                            ", the grid's " + of_grid);
  }
}

/// The library compares what begins with a block count in both files or in neither.
bool library_can_compare(const Pair& pair) {
  if (!traits_of(pair.restart.layout).holds_extents()) return false;
  return traits_of(pair.restart.layout).may_hold_count()
             ? pair.restart.multiblock == pair.grid.multiblock
             : pair.grid.multiblock;
}

/// The two files of a command, and how far to look at them.
struct Search {
  const std::string& grid_path;
  const std::string& restart_path;
  const Usage& usage;
  Look look;
};

Found grid_of(const Search& search, const StatedGridForm& stated) {
  try {
    return search.look == Look::everywhere ? prove_grid(search.grid_path, stated)
                                           : find_grid(search.grid_path, stated);
  } catch (const Unreadable&) {
    refuse_if_restart(search.grid_path, search.restart_path, search.usage);
    throw;
  }
}

Found restart_of(const Search& search, const StatedRestartForm& stated, const Extents& grid) {
  try {
    return search.look == Look::everywhere ? prove_restart(search.restart_path, stated, grid)
                                           : find_restart(search.restart_path, stated, grid);
  } catch (const Unreadable&) {
    refuse_if_grid(search.restart_path, search.grid_path, search.usage);
    throw;
  }
}

Extents extents_of_grid(const std::string& path, const Found& grid) {
  if (grid.reading.extents != nullptr) return *grid.reading.extents;
  return extents_of(read_grid(path, grid));
}

}  // namespace

Case find_case(const std::string& grid_path, const StatedGridForm& grid,
               const std::string& restart_path, const StatedRestartForm& restart,
               const Usage& usage, Look look) {
  require_regular_file(restart_path);
  const Search search{grid_path, restart_path, usage, look};
  Case found{.grid = grid_of(search, grid)};
  found.extents = extents_of_grid(grid_path, found.grid);
  found.restart = restart_of(search, restart, found.extents);
  const Reading& reading = found.restart.reading;
  const Pair pair{grid_path, found.grid.grid(), restart_path, found.restart.restart()};
  if (reading.extents == nullptr) {
    // A layout without extents, or a header that is none, of which the library knows to say why.
    static_cast<void>(header_with_advice(restart_path, found.restart.restart()));
    return found;
  }
  if (*reading.extents == found.extents) return found;
  if (reading.free_count) refuse_if_grid(restart_path, grid_path, usage);
  if (library_can_compare(pair)) report_by_library(pair);
  require_same_extents(pair, found.extents, *reading.extents);
  return found;
}

Restart read_restart_of_grid(const std::string& restart_path, const Case& found) {
  return read_restart(restart_path, found.restart, found.extents);
}

}  // namespace p3dgrid::tool
