#pragma once

#include "MOD_P3DReader.hpp"
#include "p3dgrid/layout.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

/// Checks of the arguments of restart operations. Invalid arguments are a fatal error.
namespace mod_p3dgrid {

using p3dgrid::Coding;
using p3dgrid::LayoutTraits;

/// Beginning of messages about a restart file, before its path.
inline constexpr const char* restart_kind = "restart file ";
/// The same with the path.
[[nodiscard]] std::string restart_file(const FileName& filename);

/// The file of an operation.
struct RestartFile {
  const FileName& filename;
  const Unit& unit;
  const LayoutTraits& layout;
  Coding coding;
  integer nblocks;
  PointNumbering points = {};
};

/// Calls `dispreadwrite`.
/// @param variable  number of the variable that is read alone
void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const LayoutTraits& layout, logical multiblock,
                      std::optional<integer> variable = {});

/// Refuses an unknown restart layout code.
void check_layout(const FileName& filename, const LayoutTraits& layout, integer rsttype);

/// Refuses files of two dimensions in layouts that have none.
void check_dimensions(const FileName& filename, const LayoutTraits& layout, const Coding& coding);

[[noreturn]] void refuse_restart(const FileName& filename, const std::string& reason);

[[nodiscard]] std::int64_t sum(array_view<const integer, 1> blockpoints);

/// Refuses variables above `rows`.
void check_variables(const FileName& filename, integer highest, std::int64_t rows);

/// Refuses variable counts of fewer blocks than are written.
/// @param prefix  beginning of the error message, before the path
void check_variable_counts(const char* prefix, const FileName& filename, const LayoutTraits& layout,
                           integer nblocks);

/// Highest variable number of the body to be written. Refuses an unterminated chain of flags, and
/// variable counts of fewer blocks.
[[nodiscard]] integer checked_highest_to_write(const RestartFile& file);

/// Refuses triplets that do not hold three values for each point, if the layout has them.
/// @param extents  of the array of triplets
void check_triplets(const RestartFile& file, const char* name,
                    const std::array<std::int64_t, 2>& extents);

/// @name Flow parameters
/// In layouts that have them: one row per block in `sqvar` for single-precision records, else in
/// `dqvar`.
/// @{

/// Refuses missing arrays, and arrays without the rows to be written. Block n is written from row
/// min(n, nparamrows).
void check_parameters_to_write(const RestartFile& file, integer nparamrows);

/// Creates a missing array from the other one.
void create_parameters_to_write(const RestartFile& file, integer nparamrows);

/// Creates a missing array with the values of the other one, or zeros. Refuses an array with fewer
/// rows than blocks.
void create_parameters_to_read(const RestartFile& file);
/// @}

}  // namespace mod_p3dgrid
