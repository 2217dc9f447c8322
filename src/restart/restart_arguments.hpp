#pragma once

#include "MOD_P3DReader.hpp"
#include "p3dgrid/layout.hpp"
#include "state/point_numbering.hpp"

/// What the operations on restart bodies ask of their arguments. A caller's mistake is a fatal
/// error.
namespace mod_p3dgrid {

using p3dgrid::LayoutTraits;

/// Tells the host that a restart file is about to be read or written.
/// @param variable  the one variable that is read, where one is
void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const LayoutTraits& layout, logical multiblock,
                      std::optional<integer> variable = {});

/// Refuses a restart layout code that is none.
void check_layout(const FileName& filename, const LayoutTraits& layout, integer rsttype);

/// What messages about a restart file begin with.
[[nodiscard]] std::string restart_file(const FileName& filename);

/// Sum of the caller's points per block.
[[nodiscard]] std::int64_t sum(array_view<const integer, 1> blockpoints);

/// Refuses variables that an array of `rows` has no place for.
void check_variables(const FileName& filename, integer highest, std::int64_t rows);

/// Refuses an array (values per point, point) that holds fewer points than the blocks have.
void check_points(const FileName& filename, const char* name, std::int64_t points_held,
                  const PointNumbering& points);

/// Refuses triplets that do not hold three values for each point.
void check_triplets(const FileName& filename, const char* name, array_view<const float, 2> triplets,
                    const PointNumbering& points);

/// Refuses, before a file is written, a chain of flags without its end, and variable counts of
/// fewer blocks than are to be written.
void check_state_to_write(const FileName& filename, const LayoutTraits& layout, integer nblocks);

[[noreturn]] void refuse_restart(const FileName& filename, const std::string& reason);

}  // namespace mod_p3dgrid
