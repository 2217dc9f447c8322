#include "agreement.hpp"

#include "console.hpp"
#include "failure.hpp"
#include "form_guess.hpp"
#include "grid_file.hpp"
#include "paths.hpp"
#include "process.hpp"
#include "restart_guess.hpp"
#include "restart_header.hpp"
#include "table.hpp"

namespace p3dgrid {
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

std::string with_advice(const std::string& message, const std::string& advice) {
  return advice.empty() ? message : message + "; " + advice;
}

/// What is wrong may be no more than an option: a file stated wrongly can look like another one.
std::string advice_for(const Pair& pair) {
  const FormGuess guess = guess_form(pair.grid_path);
  const std::string of_grid = guess.allows(pair.grid) ? "" : guess.advice(pair.grid);
  if (!of_grid.empty()) return pair.grid_path + ": " + of_grid;
  RestartForm form = pair.restart;  // whose precision does not matter to the extents
  for (const Precision precision : {Precision::double_precision, Precision::single_precision}) {
    form.precision = precision;
    if (lengths_fit(pair.restart_path, form, std::nullopt)) return "";
  }
  const std::string of_restart = restart_advice(pair.restart_path, pair.restart, std::nullopt);
  return of_restart.empty() ? "" : pair.restart_path + ": " + of_restart;
}

void compare_by_library(const Pair& pair) {
  const LibraryMessages shown(print_line);
  try {
    // Counts of another file would be taken for this one's room.
    mod_p3dgrid::nfvar.deallocate();
    mod_p3dgrid::checkp3drstrtheader(
        name_for(pair.grid_path), static_cast<integer>(pair.grid.encoding),
        name_for(pair.restart_path), static_cast<integer>(pair.restart.encoding),
        logical(pair.restart.precision == Precision::double_precision),
        static_cast<integer>(pair.restart.layout), logical(pair.grid.multiblock));
  } catch (const Halt&) {
    throw Failure(ExitStatus::mismatch, with_advice(pair.disagreement(), advice_for(pair)));
  } catch (const Unreadable& failure) {
    throw Failure(failure.status(),
                  with_advice(failure.what(), guess_form(pair.grid_path).advice(pair.grid)));
  }
}

/// For files of which one begins with a block count and the other does not: the library is told of
/// that for both at once.
void compare_here(const Pair& pair, const RestartHeader& header) {
  const Extents grid = extents_of(read_grid(pair.grid_path, pair.grid));
  if (grid.blocks() != header.blocks) {
    throw Failure(ExitStatus::mismatch, pair.disagreement() + ": it holds " +
                                            counted(header.blocks, "block") + ", the grid " +
                                            std::to_string(grid.blocks()));
  }
  for (std::size_t b = 0; b < grid.i.size(); ++b) {
    const std::string of_grid = grid.text_of(b);
    const std::string of_restart = header.extents.text_of(b);
    if (of_grid == of_restart) continue;
    throw Failure(ExitStatus::mismatch, pair.disagreement() + ": its block " +
                                            std::to_string(b + 1) + " is " + of_restart +
                                            ", the grid's " + of_grid);
  }
}

// Without a block count in the grid the library compares the first block alone.
void require_one_block(const Pair& pair, const RestartHeader& header) {
  if (header.blocks == 1) return;
  throw Failure(ExitStatus::mismatch, pair.disagreement() + ": it holds " +
                                          counted(header.blocks, "block") + ", the grid 1");
}

}  // namespace

void require_agreement(const std::string& grid_path, const GridForm& grid,
                       const std::string& restart_path, const RestartForm& restart) {
  const Pair pair{grid_path, grid, restart_path, restart};
  require_regular_file(restart_path);
  // Read here first, because the library's own complaints about a header name no option.
  const RestartHeader header = header_with_advice(restart_path, restart);
  if (may_hold_count(restart.layout) && restart.multiblock != grid.multiblock) {
    return compare_here(pair, header);
  }
  compare_by_library(pair);
  if (!may_hold_count(restart.layout) && !grid.multiblock) require_one_block(pair, header);
}

std::optional<Extents> extents_to_read_by(const std::string& grid_path, const GridForm& grid,
                                          const std::string& restart_path,
                                          const RestartForm& restart) {
  require_regular_file(restart_path);
  if (!holds_extents(restart.layout)) return extents_of(read_grid(grid_path, grid));
  require_agreement(grid_path, grid, restart_path, restart);
  return std::nullopt;
}

Restart read_restart_of_grid(const std::string& grid_path, const GridForm& grid,
                             const std::string& restart_path, const RestartForm& restart) {
  return read_restart(restart_path, restart,
                      extents_to_read_by(grid_path, grid, restart_path, restart));
}

}  // namespace p3dgrid
