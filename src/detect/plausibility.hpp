#pragma once

#include "detect/evidence.hpp"

namespace p3dgrid {

/// If several readings agree and differ in byte order or precision, takes the one whose reals are
/// plausible, if those of all others are not. A sample of each record is examined.
void settle_by_values(Evidence& file, Detection& found);

}  // namespace p3dgrid
