#include "input_files.hpp"

#include <optional>
#include <p3dgrid/check.hpp>

#include "console.hpp"
#include "failure.hpp"
#include "file_input.hpp"

namespace p3dgrid::tool {
namespace {

/// The reading that a search finds, if it is the only one and agrees with the whole file.
template <class Find>
std::optional<Reading> certain(const Find& find) {
  try {
    Reading reading = find().reading;
    if (reading.checked && reading.fit.whole() && !reading.free_count) return reading;
  } catch (const Failure&) {
    // No reading fits, or several do.
  }
  return std::nullopt;
}

std::optional<Reading> known(const std::string& path) {
  return certain([&] { return find_any(path); });
}

/// The same with a grid, by whose extents layouts without extents of their own are recognised.
std::optional<Reading> known_beside(const std::string& path, const Extents& grid) {
  auto reading = known(path);
  if (reading) return reading;
  reading = certain([&] { return find_restart(path, {}, grid); });
  // A grid can look like a solution of fewer variables than five.
  const bool solution = reading && !reading->own_extents && reading->restart().sections &&
                        variables_in(*reading->restart().sections) >= solution_variables;
  return solution ? reading : std::nullopt;
}

[[noreturn]] void refuse(const std::string& path, const Reading& reading,
                         const std::string& meant) {
  const std::string what =
      reading.is_grid()
          ? "is a grid, not a restart (flow-solution) file: " + describe(reading.grid())
          : "is a restart (flow-solution) file, not a grid: " + describe(reading);
  throw Unreadable(path + ": " + what + "; " + meant);
}

enum class Kind { grid, restart };

void refuse_if(Kind kind, const std::string& path, const std::string& meant) {
  const auto reading = known(path);
  if (reading && reading->is_grid() == (kind == Kind::grid)) refuse(path, *reading, meant);
}

/// The restart file of the command may be the grid.
void refuse_if_restart(const std::string& path, const std::string& restart_path,
                       const Usage& usage) {
  const auto other = known(restart_path);
  if (!other || !other->is_grid()) {
    return refuse_if(Kind::restart, path,
                     "'" + usage.pair("GRID", path) + "' takes it with its grid");
  }
  const auto reading = known_beside(path, *other->extents);
  if (reading && !reading->is_grid()) {
    const std::string& grid = restart_path;
    refuse(path, *reading, grid + " is the grid: '" + usage.pair(grid, path) + "'");
  }
}

/// Runs `find`. If the file is unreadable, `explain` may throw a Failure that says more.
template <class Find, class Explain>
Found find_or_explain(const Find& find, const Explain& explain) {
  try {
    return find();
  } catch (const Unreadable&) {
    explain();
    throw;
  }
}

std::string filled_in(std::string_view text, const std::string& grid, const std::string& restart) {
  std::string result;
  while (!text.empty()) {
    if (text.starts_with("GRID")) {
      result += grid;
      text.remove_prefix(4);
    } else if (text.starts_with("RESTART")) {
      result += restart;
      text.remove_prefix(7);
    } else {
      result += text.front();
      text.remove_prefix(1);
    }
  }
  return result;
}

void refuse_if_grid(const std::string& path, const std::string& grid_path, const Usage& usage) {
  refuse_if(Kind::grid, path,
            usage.grid_alone != nullptr
                ? filled_in(usage.grid_alone, path, "")
                : "'" + usage.pair(grid_path, "RESTART") + "' takes a restart file there");
}

Extents extents_of_grid(const std::string& path, const Found& grid) {
  if (grid.reading.extents != nullptr) return *grid.reading.extents;
  return GridInput(path, grid).extents();
}

}  // namespace

std::string Usage::pair(const std::string& grid, const std::string& restart) const {
  return filled_in(command_line, grid, restart);
}

Found find_file(const AnyFile& file, Look look) {
  const std::string& path = file.path;
  const std::string& grid_option = file.grid_option;
  const std::string& restart_option = file.restart_option;
  if (!grid_option.empty() && !restart_option.empty()) {
    throw Unusable(grid_option + " describes a grid, and " + restart_option + " makes " + path +
                   " a restart file; --grid names its grid");
  }
  if (!grid_option.empty()) {
    return find_or_explain(
        [&] { return find_grid(path, file.grid, look); },
        [&] { refuse_if(Kind::restart, path, grid_option + " describes a grid"); });
  }
  if (!restart_option.empty()) {
    return find_or_explain(
        [&] { return find_restart(path, file.restart, std::nullopt, look); },
        [&] { refuse_if(Kind::grid, path, restart_option + " describes a restart file"); });
  }
  return find_any(path);
}

Found find_grid(const std::string& path, const StatedGridForm& stated, const std::string& meant) {
  return find_or_explain([&] { return find_grid(path, stated); },
                         [&] { refuse_if(Kind::restart, path, meant); });
}

Case find_case(const std::string& grid_path, const StatedGridForm& grid,
               const std::string& restart_path, const StatedRestartForm& restart,
               const Usage& usage, Look look) {
  require_regular_file(restart_path);
  Case found{.grid = find_or_explain([&] { return find_grid(grid_path, grid, look); },
                                     [&] { refuse_if_restart(grid_path, restart_path, usage); })};
  found.extents = extents_of_grid(grid_path, found.grid);
  found.restart =
      find_or_explain([&] { return find_restart(restart_path, restart, found.extents, look); },
                      [&] { refuse_if_grid(restart_path, grid_path, usage); });
  const Reading& reading = found.restart.reading;
  if (reading.extents == nullptr) {
    // A layout without extents, or an invalid header, whose place the reader reports.
    static_cast<void>(RestartInput(restart_path, found.restart, found.extents));
    return found;
  }
  if (*reading.extents == found.extents) return found;
  if (reading.free_count) refuse_if_grid(restart_path, grid_path, usage);
  for (const std::string& line : mismatch_report(found.extents, *reading.extents)) {
    print_result(line);
  }
  throw Mismatch(
      differing_blocks(restart_path, *reading.extents, found.extents, grid_path).front().what());
}

}  // namespace p3dgrid::tool
