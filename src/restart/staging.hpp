#pragma once

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid {

/// The arrays that `readp3drestart` reads through. They are released at the end of a successful
/// read, except `DX` after layout 100; what a failed read leaves allocated is reported by the next
/// allocation.
struct RestartStaging {
  allocatable<double, 2> DW;     ///< flow variables of a double-precision file
  allocatable<double, 2> DX;     ///< triplets of a double-precision file
  allocatable<double, 2> DWTMP;  ///< `DW` enlarged
  allocatable<float, 2> WTMP;    ///< the flow array enlarged
};

[[nodiscard]] RestartStaging& restart_staging();

}  // namespace mod_p3dgrid
