#pragma once

#include <cstdint>
#include <string>

#include "find.hpp"
#include "form_options.hpp"
#include "library.hpp"

namespace p3dgrid::tool {

/// A grid in memory, as the library reads and writes it.
struct Grid {
  integer blocks = 0;
  integer ndim = 3;
  allocatable<integer, 1> idim;
  allocatable<integer, 1> jdim;
  allocatable<integer, 1> kdim;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> iblank;  ///< allocated if it has blanking

  /// Points of a block, counted from 1.
  [[nodiscard]] std::int64_t points_of(integer block) const;

  /// Points of all blocks.
  [[nodiscard]] std::int64_t points() const { return xyz.allocated() ? xyz.extent(2) : 0; }
};

[[nodiscard]] Extents extents_of(const Grid& grid);

/// A grid with these extents and room for its coordinates. Throws std::bad_alloc.
[[nodiscard]] Grid grid_with(const Extents& extents);

/// Sets the blanking value to 1, in use, at every point. Throws std::bad_alloc.
void allocate_blanking(Grid& grid);

/// Reads a grid file in the form that has been found, and compares a stated form with the file.
/// Throws a Failure that names the file and the options that would help.
[[nodiscard]] Grid read_grid(const std::string& path, const Found& found);

/// Writes a grid file.
void write_grid(const std::string& path, const GridForm& form, const Grid& grid);

}  // namespace p3dgrid::tool
