#pragma once

#include "mod_p3dgrid/logical.hpp"

/// The fixed unit numbers, each for one kind of file. No two files of one kind are open at once.
namespace mod_p3dgrid::unit_number {

inline constexpr integer grid = 13;            ///< grid file read or written
inline constexpr integer grid_header = 22;     ///< grid file read again for its header
inline constexpr integer spare = 23;           ///< closed by the grid check, opened by nothing
inline constexpr integer restart_read = 201;   ///< restart file being read
inline constexpr integer restart_write = 301;  ///< restart file or temporary file being written
inline constexpr integer tecplot = 594;        ///< Tecplot file

/// Temporary file of a variable, counted from 1, while it is combined: 302 upward.
[[nodiscard]] constexpr integer temporary(integer variable) {
  return restart_write + variable;
}

}  // namespace mod_p3dgrid::unit_number
