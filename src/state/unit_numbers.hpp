#pragma once

#include "mod_p3dgrid/logical.hpp"

/// The fixed unit numbers.
namespace mod_p3dgrid::unit_number {

inline constexpr integer grid = 13;            ///< grid file read or written
inline constexpr integer grid_header = 22;     ///< grid file whose header is read
inline constexpr integer spare = 23;           ///< closed by `checkp3drstrtheader`, never opened
inline constexpr integer restart_read = 201;   ///< restart file being read
inline constexpr integer restart_write = 301;  ///< restart file or temporary file being written
inline constexpr integer tecplot = 594;        ///< Tecplot file

/// Temporary file of a variable, from 1, while files are combined.
[[nodiscard]] constexpr integer temporary(integer variable) {
  return restart_write + variable;
}

}  // namespace mod_p3dgrid::unit_number
