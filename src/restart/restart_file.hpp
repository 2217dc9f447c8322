#pragma once

#include "MOD_P3DReader.hpp"
#include "grid/dimensions.hpp"
#include "p3dgrid/layout.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

/// Restart files: their headers, and checks of the arguments of operations. Invalid arguments are a
/// fatal error.
namespace mod_p3dgrid {

using p3dgrid::Coding;
using p3dgrid::LayoutTraits;

/// Beginning of messages about a restart file, before its path.
inline constexpr const char* restart_kind = "restart file ";
/// The same with the path.
[[nodiscard]] std::string restart_file(const FileName& filename);

/// The arguments of an operation that describe its file.
struct RestartArguments {
  const FileName& filename;
  integer iformat = 0;
  logical dblprec;
  integer rsttype = 0;
  logical multiblock;
};

/// The file of an operation.
struct RestartFile : RestartArguments {
  RestartFile(const RestartArguments& arguments, integer unit_number, integer blocks = 1)
      : RestartArguments(arguments), unit(unit_number, iformat), nblocks(blocks) {}

  Unit unit;
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  Coding coding = unit.coding(filename, dblprec);
  integer nblocks;
  PointNumbering points = {};
};

/// Calls `dispreadwrite`, and then refuses an unknown restart layout code.
/// @param variable  number of the variable that is read alone
void announce_restart(integer mode, const RestartArguments& arguments,
                      std::optional<integer> variable = {});

/// Refuses an unknown restart layout code.
void check_layout(const RestartArguments& arguments);

[[noreturn]] void refuse_restart(const FileName& filename, const std::string& reason);

[[nodiscard]] std::int64_t sum(integer_view blockpoints);

/// Refuses variables above `rows`.
void check_variables(const FileName& filename, integer highest, std::int64_t rows);

/// Refuses variable counts of fewer blocks than are written.
/// @param prefix  beginning of the error message, before the path
void check_variable_counts(const char* prefix, const RestartFile& file);

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

/// @name Headers
/// @{

/// `readrestartheader`. Throws `FailedRead`.
/// @param nblocks  set to the block count of the header
/// @param extents  allocated with an entry per block; 0 if the header holds none
void read_restart_header(const RestartFile& file, integer& nblocks, ExtentArrays& extents);

/// Throws `FailedRead` for invalid extents. Called before arrays of points are allocated.
void require_plausible_extents(const Unit& unit, const ExtentArrays& extents);

/// `writerestartheader`.
void write_restart_header(const RestartFile& file, const ExtentViews& extents);
/// @}

}  // namespace mod_p3dgrid
