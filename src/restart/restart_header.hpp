#pragma once

#include "MOD_P3DReader.hpp"
#include "grid/dimensions.hpp"

namespace mod_p3dgrid {

/// `readrestartheader`. Throws `FailedRead`.
/// @param extents  allocated with an entry per block; 0 if the header holds none
void read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                         integer& nblocks, integer rsttype, logical multiblock,
                         ExtentArrays& extents);

/// Throws `FailedRead` for invalid extents. Called before arrays of points are allocated.
void require_plausible_extents(const Unit& unit, const ExtentArrays& extents);

/// `writerestartheader`.
void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, const ExtentViews& extents, integer rsttype,
                          logical multiblock);

}  // namespace mod_p3dgrid
