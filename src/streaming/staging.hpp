#pragma once

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// What `readnextp3dvar` reads one variable through. Released at the end of a successful call; what
/// a failed read leaves allocated is reported by the next call's allocations.
struct OneVariableStaging {
  allocatable<double, 2> DW;  ///< (1, points) of text and double-precision records
  allocatable<float, 2> SW;   ///< (1, points) of single-precision records
  /// For each variable of the file where its values go: the staging array of the one that is
  /// wanted, null for all others.
  allocatable<double*, 1> DPNTR;
  allocatable<float*, 1> SPNTR;
  /// For each variable of the file whether its values move on from point to point (1) or all meet
  /// the same end (0).
  allocatable<integer, 1> READII;
};

/// What `writenextp3dvar` widens one variable in; released before it returns.
struct VariableWriteStaging {
  allocatable<double, 2> DW;
};

[[nodiscard]] OneVariableStaging& one_variable_staging();
[[nodiscard]] VariableWriteStaging& variable_write_staging();

}  // namespace mod_p3dgrid
