#pragma once

#include "MOD_P3DReader.hpp"
#include "restart/layout.hpp"
#include "state/point_numbering.hpp"

/// What the operations on restart bodies ask of their arguments. A caller's mistake is an error of
/// the run.
namespace mod_p3dgrid {

/// The caller's extents, one entry per block.
struct CallerExtents {
  array_view<const integer, 1> idim;
  array_view<const integer, 1> jdim;
  array_view<const integer, 1> kdim;
};

/// Tells the host that a restart file is about to be read or written.
/// @param mode      1 for a read, 2 for a write
/// @param variable  the one variable that is read, where one is
void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const Layout& layout, logical multiblock,
                      std::optional<integer> variable = {});
inline constexpr integer announce_restart_read = 1;
inline constexpr integer announce_restart_write = 2;

/// Refuses a restart layout code that is none.
void check_layout(const FileName& filename, const Layout& layout, integer rsttype);

/// Numbers the points of `nblocks` blocks by the caller's extents.
[[nodiscard]] PointNumbering checked_numbering(const FileName& filename, integer nblocks,
                                               const CallerExtents& extents);

/// Refuses variables that an array of `rows` has no place for.
void check_variables(const FileName& filename, integer highest, std::int64_t rows);

[[noreturn]] void refuse_restart(const FileName& filename, const std::string& reason);

}  // namespace mod_p3dgrid
