#include "wrong_place.hpp"

#include <optional>

#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

/// The reading that a search finds, where it is beyond doubt.
template <class Find>
std::optional<Reading> certain(const Find& find) {
  try {
    Reading reading = find().reading;
    if (reading.checked && reading.fit.whole() && !reading.free_count) return reading;
  } catch (const Failure&) {
    // It is none, or can be more than one thing.
  }
  return std::nullopt;
}

std::optional<Reading> known(const std::string& path) {
  return certain([&] { return find_any(path); });
}

/// The same with a grid at hand, whose extents show what layouts without extents of their own are.
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

}  // namespace

void refuse_if_restart(const std::string& path, const std::string& meant) {
  const auto reading = known(path);
  if (reading && !reading->is_grid()) refuse(path, *reading, meant);
}

void refuse_if_grid(const std::string& path, const std::string& meant) {
  const auto reading = known(path);
  if (reading && reading->is_grid()) refuse(path, *reading, meant);
}

void refuse_if_restart(const std::string& path, const std::string& restart_path,
                       const Usage& usage) {
  const auto other = known(restart_path);
  if (!other || !other->is_grid()) {
    return refuse_if_restart(path, "'" + usage.pair("GRID", path) + "' takes it with its grid");
  }
  const auto reading = known_beside(path, *other->extents);
  if (reading && !reading->is_grid()) {
    refuse(path, *reading, restart_path + " is the grid: '" + usage.pair(restart_path, path) + "'");
  }
}

void refuse_if_grid(const std::string& path, const std::string& grid_path, const Usage& usage) {
  refuse_if_grid(path, usage.grid_alone ? usage.grid_alone(path)
                                        : "'" + usage.pair(grid_path, "RESTART") +
                                              "' takes a restart file there");
}

Found find_grid(const std::string& path, const StatedGridForm& stated, const std::string& meant) {
  try {
    return find_grid(path, stated);
  } catch (const Unreadable&) {
    refuse_if_restart(path, meant);
    throw;
  }
}

}  // namespace p3dgrid::tool
