#pragma once

#include <string>

#include "p3dgrid/form.hpp"

namespace interop {

/// How many reads the library has reported as failed to this host's `mod_gridvars`.
[[nodiscard]] int failed_reads();

/// Has the host return from the next `times` allocations of arrays that are allocated already. It
/// throws on any other allocation that fails.
void tolerate_repeated_allocations(int times);
/// How many of them have not been made.
[[nodiscard]] int repeated_allocations_to_come();

/// The name under which the library gets to see the file at hand, whatever its path.
inline constexpr const char* short_name = "file";

/// Size of the record markers of all files.
[[nodiscard]] p3dgrid::MarkerBytes& marker_bytes();

/// Makes `short_name` stand for `path`; the library is silent, and fatal errors are
/// exceptions.
/// @param planar  the file has two dimensions
void become_host_for(const std::string& path, bool planar = false);

}  // namespace interop
