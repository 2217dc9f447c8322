#pragma once

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {

/// Keeps what `p3dlastfailure` tells the host.
void set_last_failure(ReadFailure failure);

}  // namespace mod_p3dgrid
