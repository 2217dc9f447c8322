#pragma once

#include "MOD_P3DReader.hpp"
#include "grid/dimensions.hpp"

namespace mod_p3dgrid {

/// Does what `readrestartheader` says. Throws `FailedRead`.
/// @param extents  those that the header holds; 0 where it holds none
void read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                         integer& nblocks, integer rsttype, logical multiblock,
                         ExtentArrays& extents);

/// Throws `FailedRead` for extents that no block can have. Called before arrays of points are
/// allocated for the file.
void require_plausible_extents(const Unit& unit, const ExtentArrays& extents);

/// Does what `writerestartheader` says.
void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, const ExtentViews& extents, integer rsttype,
                          logical multiblock);

}  // namespace mod_p3dgrid
