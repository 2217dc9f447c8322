#pragma once

#include <MOD_P3DReader.hpp>
#include <cstdint>
#include <string>

#include "find.hpp"
#include "form_options.hpp"

namespace p3dgrid::tool {

/// A grid in memory, as the library reads and writes it.
struct Grid {
  mod_p3dgrid::integer blocks = 0;
  mod_p3dgrid::integer ndim = 3;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> idim;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> jdim;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> kdim;
  mod_p3dgrid::allocatable<float, 2> xyz;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> iblank;  ///< allocated with blanking only

  /// Points of a block, counted from 1.
  [[nodiscard]] std::int64_t points_of(mod_p3dgrid::integer block) const;

  /// Points of all blocks.
  [[nodiscard]] std::int64_t points() const { return xyz.allocated() ? xyz.extent(2) : 0; }
};

[[nodiscard]] Extents extents_of(const Grid& grid);

/// Sizes the extents for `blocks` blocks. Throws std::bad_alloc.
void allocate_extents(Grid& grid, mod_p3dgrid::integer blocks);

/// Sizes the coordinates for the extents that are set. Throws std::bad_alloc.
void allocate_coordinates(Grid& grid);

/// Gives a grid that has no blanking the value 1, in use, at every point. Throws std::bad_alloc.
void allocate_blanking(Grid& grid);

/// A grid of the first block alone. Throws std::bad_alloc.
[[nodiscard]] Grid first_block(const Grid& grid);

/// Reads a grid file in the form that has been found. Throws a Failure that names the file; a form
/// that was stated and not looked for is compared with the file, and the options that would help
/// are named.
[[nodiscard]] Grid read_grid(const std::string& path, const Found& found);

/// Writes a grid file; what `path` names is complete only once this returns.
void write_grid(const std::string& path, const GridForm& form, const Grid& grid);

}  // namespace p3dgrid::tool
