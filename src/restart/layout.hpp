#pragma once

#include <cstdint>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid {

/// What stands in front of the block dimensions of a restart file.
enum class HeaderKind : std::uint8_t {
  none,
  talven,        ///< version and equation set, run data, for one equation set flow parameters
  time_step,     ///< step count, step size, block count
  single_block,  ///< extents of the one block, step count, step size
  plot3d,        ///< a block count, where the file has one
};

/// How a restart file holds its block dimensions.
enum class DimensionKind : std::uint8_t {
  none,
  record_per_block,           ///< i, j, k of one block to a record
  one_record,                 ///< i, j, k of all blocks in one record
  one_record_with_variables,  ///< i, j, k and number of variables of all blocks in one record
};

/// One restart layout: everything that depends on the restart layout code, except the few rules in
/// body.hpp that depend on encoding and precision besides.
struct Layout {
  HeaderKind header = HeaderKind::none;
  DimensionKind dimensions = DimensionKind::none;
  integer iparm1 = 20;  ///< how the host is told of it
  integer iparm2 = 300;
  bool parameters = false;         ///< a block begins with its four flow parameters
  bool counted_variables = false;  ///< the header tells the number of variables of each block
  bool triplets = false;           ///< the first record of a block begins with three values a point
  bool extensions = false;         ///< flags and the variables that they announce follow the blocks
  bool known = true;               ///< false for any code but those of a layout
};

[[nodiscard]] const Layout& layout_of(integer rsttype);

}  // namespace mod_p3dgrid
