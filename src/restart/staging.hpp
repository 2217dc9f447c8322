#pragma once

#include <type_traits>

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// Staging arrays of `readp3drestart`. A successful read releases them, except the triplets of
/// layout 100.
/// Arrays that a failed read leaves are reported by the next allocation, as those below.
struct RestartStaging {
  allocatable<double, 2> DW;     ///< flow variables of a double-precision file
  allocatable<double, 2> DX;     ///< triplets of a double-precision file
  allocatable<double, 2> DWTMP;  ///< enlarged flow variables in double precision
  allocatable<float, 2> SW;      ///< as `DW`, of a single-precision file read into doubles
  allocatable<float, 2> SX;      ///< as `DX`, likewise
  allocatable<float, 2> WTMP;    ///< enlarged flow variables in single precision
};
inline RestartStaging restart_staging;

/// The staging arrays of one kind.
template <class Real>
struct StagingOfKind {
  allocatable<Real, 2>& flow;
  allocatable<Real, 2>& triplets;
  allocatable<Real, 2>& enlarged;
};

template <class Real>
[[nodiscard]] StagingOfKind<Real> staging_of_kind() {
  auto& s = restart_staging;
  if constexpr (std::is_same_v<Real, float>) {
    return {s.SW, s.SX, s.WTMP};
  } else {
    return {s.DW, s.DX, s.DWTMP};
  }
}

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
