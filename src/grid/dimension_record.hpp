#pragma once

#include <initializer_list>

#include "format/header.hpp"
#include "mod_p3dgrid/arrays.hpp"
#include "recordio/unit.hpp"

namespace mod_p3dgrid {

/// Block dimensions: i, j and k extents and, in function files, the number of variables, an entry
/// per block each. Each column has at least `nblocks` entries.
using Columns = std::initializer_list<array_view<integer, 1>>;
using ConstColumns = std::initializer_list<array_view<const integer, 1>>;

/// Reads them; what a failed read or a null value leaves out stays as it is in the columns. False
/// if they cannot be read.
[[nodiscard]] bool read_dimensions(const recordio::Unit& unit, p3dgrid::DimensionKind kind,
                                   integer nblocks, Columns columns);

void write_dimensions(const recordio::Unit& unit, p3dgrid::DimensionKind kind, integer nblocks,
                      ConstColumns columns);

/// The same of a grid.
[[nodiscard]] inline bool read_dimension_record(const recordio::Unit& unit, integer nblocks,
                                                Columns columns) {
  return read_dimensions(unit, p3dgrid::DimensionKind::one_record, nblocks, columns);
}
inline void write_dimension_record(const recordio::Unit& unit, integer nblocks,
                                   ConstColumns columns) {
  write_dimensions(unit, p3dgrid::DimensionKind::one_record, nblocks, columns);
}

/// Whether arrays for so many blocks may be allocated: up to a fixed number of blocks always, above
/// it if the file is long enough for their extents.
/// @param claim  `one_record` for a dimension record, `records` where each block has its own
[[nodiscard]] bool can_hold_dimensions(const recordio::Unit& unit, integer nblocks,
                                       recordio::Claim claim = recordio::Claim::one_record);

/// Records invalid extents as a failed read.
void fail_on_extents(const recordio::Unit& unit, integer block, integer i, integer j, integer k);

}  // namespace mod_p3dgrid
