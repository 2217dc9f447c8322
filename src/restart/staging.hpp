#pragma once

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// Staging arrays of `readp3drestart` for files of `Real`. A successful read releases them, except
/// the triplets of layout 100. Arrays that a failed read leaves are reported by the next
/// allocation, as those below.
template <class Real>
struct RestartStaging {
  allocatable<Real, 2> flow;      ///< of a file of this kind that is read into the other kind
  allocatable<Real, 2> triplets;  ///< likewise
  allocatable<Real, 2> enlarged;  ///< flow variables with those of an extension
};
template <class Real>
inline RestartStaging<Real> restart_staging;

/// Staging arrays of `readnextp3dvar`. A successful call releases them. Hosts are told of the two
/// tables, which have an entry per variable of the file and are not used.
template <class Real>
struct OneVariableStaging {
  allocatable<Real, 2> values;  ///< (1, points)
  allocatable<Real*, 1> targets;
};
template <class Real>
inline OneVariableStaging<Real> one_variable_staging;
inline allocatable<integer, 1> one_variable_steps;

/// File-format code of temporary variable files: unformatted.
inline constexpr integer temporary_file_format = 0;

}  // namespace mod_p3dgrid
