#pragma once

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// Staging arrays of `readp3drestart`. A successful read releases them, except `DX` of layout 100.
/// Arrays that a failed read leaves are reported by the next allocation, as those below.
struct RestartStaging {
  allocatable<double, 2> DW;     ///< flow variables of a double-precision file
  allocatable<double, 2> DX;     ///< triplets of a double-precision file
  allocatable<double, 2> DWTMP;  ///< enlarged `DW`
  allocatable<float, 2> WTMP;    ///< enlarged flow array
};
inline RestartStaging restart_staging;

/// Staging arrays of `readnextp3dvar`. A successful call releases them.
struct OneVariableStaging {
  allocatable<double, 2> DW;  ///< (1, points) of text and double-precision records
  allocatable<float, 2> SW;   ///< (1, points) of single-precision records
  /// @name Unused tables of which hosts are told, with an entry per variable of the file
  /// @{
  allocatable<double*, 1> DPNTR;
  allocatable<float*, 1> SPNTR;
  allocatable<integer, 1> READII;
  /// @}
};
inline OneVariableStaging one_variable_staging;

/// File-format code of temporary variable files: unformatted.
inline constexpr integer temporary_file_format = 0;

}  // namespace mod_p3dgrid
