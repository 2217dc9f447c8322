#pragma once

#include <initializer_list>

#include "mod_p3dgrid/arrays.hpp"
#include "recordio/unit.hpp"

namespace mod_p3dgrid {

/// The dimension record of grids, solution and function files: for each block in turn one integer
/// of each column (i, j and k extent; in function files also the number of variables), all in one
/// record. Each column has at least `nblocks` entries; with fewer than one block the record is
/// empty.
using Columns = std::initializer_list<array_view<integer, 1>>;
using ConstColumns = std::initializer_list<array_view<const integer, 1>>;

/// Reads the record; what a failed read or a null value leaves out stays as it is in the columns.
/// False if it cannot be read.
[[nodiscard]] bool read_dimension_record(const recordio::Unit& unit, integer nblocks,
                                         Columns columns);

void write_dimension_record(const recordio::Unit& unit, integer nblocks, ConstColumns columns);

/// Whether the file may hold the extents of so many blocks. Asked before arrays of that size are
/// allocated.
/// @param claim  `one_record` for a dimension record, `records` where each block has its own
[[nodiscard]] bool can_hold_dimensions(const recordio::Unit& unit, integer nblocks,
                                       recordio::Claim claim = recordio::Claim::one_record);

/// Makes extents that no array of points can have a failed read.
void fail_on_extents(const recordio::Unit& unit, integer block, integer i, integer j, integer k);

}  // namespace mod_p3dgrid
