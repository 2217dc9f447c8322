#pragma once

#include "MOD_P3DReader.hpp"
#include "recordio/unit.hpp"

namespace mod_p3dgrid {

/// The extents that a restart header holds, one entry per block; 0 where it holds none.
struct HeaderExtents {
  allocatable<integer, 1> IENG;
  allocatable<integer, 1> JENG;
  allocatable<integer, 1> KENG;
};

/// Does what `readrestartheader` says. False after a failed read, which the host has been told of.
[[nodiscard]] bool read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                                       integer& nblocks, integer rsttype, logical multiblock,
                                       HeaderExtents& extents);

/// Whether blocks can have the extents that a header has given: garbage seldom can be them. Asked
/// before arrays of points are allocated for the file. If not, that is a failed read, which the
/// host has not been told of.
[[nodiscard]] bool can_be_of_blocks(const recordio::Unit& unit, const HeaderExtents& extents);

/// Does what `writerestartheader` says.
void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, array_view<const integer, 1> idim,
                          array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                          integer rsttype, logical multiblock);

}  // namespace mod_p3dgrid
