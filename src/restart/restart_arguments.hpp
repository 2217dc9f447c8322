#pragma once

#include "MOD_P3DReader.hpp"
#include "p3dgrid/layout.hpp"
#include "state/point_numbering.hpp"

/// Checks of the arguments of restart operations. Invalid arguments are a fatal error.
namespace mod_p3dgrid {

using p3dgrid::LayoutTraits;

/// Calls `dispreadwrite`.
/// @param variable  number of the variable that is read alone
void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const LayoutTraits& layout, logical multiblock,
                      std::optional<integer> variable = {});

/// Refuses an unknown restart layout code.
void check_layout(const FileName& filename, const LayoutTraits& layout, integer rsttype);

/// Refuses files of two dimensions in layouts that have none.
void check_dimensions(const FileName& filename, const LayoutTraits& layout,
                      const p3dgrid::Coding& coding);

/// Beginning of messages about a restart file.
[[nodiscard]] std::string restart_file(const FileName& filename);

[[nodiscard]] std::int64_t sum(array_view<const integer, 1> blockpoints);

/// Refuses variables above `rows`.
void check_variables(const FileName& filename, integer highest, std::int64_t rows);

/// Refuses an array that holds fewer points than the blocks have.
void check_points(const FileName& filename, const char* name, std::int64_t points_held,
                  const PointNumbering& points);

/// Refuses triplets that do not hold three values for each point.
void check_triplets(const FileName& filename, const char* name, array_view<const float, 2> triplets,
                    const PointNumbering& points);

/// Refuses an unterminated chain of flags, and variable counts of fewer blocks than are written.
void check_state_to_write(const FileName& filename, const LayoutTraits& layout, integer nblocks);

[[noreturn]] void refuse_restart(const FileName& filename, const std::string& reason);

}  // namespace mod_p3dgrid
