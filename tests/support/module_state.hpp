#pragma once

namespace test_support {

/// Sets the module's variables, its staging arrays and the variables of `mod_gridvars` to how a run
/// begins: one section of five variables, all of them to be read.
void reset_module_state();

/// Releases the staging arrays that failed reads have left.
void reset_staging();

}  // namespace test_support
