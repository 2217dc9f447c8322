#pragma once

namespace interop {

/// How many reads the library has reported as failed to this host's `mod_gridvars`.
[[nodiscard]] int failed_reads();

}  // namespace interop
