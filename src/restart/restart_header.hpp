#pragma once

#include "grid/dimensions.hpp"
#include "restart/restart_file.hpp"

namespace mod_p3dgrid {

/// `readrestartheader`. Throws `FailedRead`.
/// @param nblocks  set to the block count of the header
/// @param extents  allocated with an entry per block; 0 if the header holds none
void read_restart_header(const RestartFile& file, integer& nblocks, ExtentArrays& extents);

/// Throws `FailedRead` for invalid extents. Called before arrays of points are allocated.
void require_plausible_extents(const Unit& unit, const ExtentArrays& extents);

/// `writerestartheader`.
void write_restart_header(const RestartFile& file, const ExtentViews& extents);

}  // namespace mod_p3dgrid
