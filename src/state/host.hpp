#pragma once

#include <new>
#include <optional>
#include <utility>

#include "mod_gridvars.hpp"
#include "mod_p3dgrid/arrays.hpp"

/// Calls of the host's procedures. Their exceptions pass through the operations. A `std::bad_alloc`
/// of the host is marked, so that it can be told from one of the library.
namespace mod_p3dgrid::host {

/// Whether the current `std::bad_alloc` was thrown by the host.
inline bool threw_bad_alloc = false;

/// Rethrows the current `std::bad_alloc` if it was thrown by the host.
inline void pass_on_bad_alloc() {
  if (std::exchange(threw_bad_alloc, false)) throw;
}

template <class Procedure, class... Arguments>
decltype(auto) call(const Procedure& procedure, Arguments&&... arguments) {
  try {
    return procedure(std::forward<Arguments>(arguments)...);
  } catch (const std::bad_alloc&) {
    threw_bad_alloc = true;
    throw;
  }
}

inline void checkallocationerror(integer status) {
  call(mod_gridvars::checkallocationerror, status);
}

inline void dispreadwrite(integer mode, integer iparm1, integer iparm2, const FileName& filename,
                          integer iformat, logical dblprec, std::optional<integer> variable,
                          std::optional<logical> useiblank, logical multiblock) {
  call(mod_gridvars::dispreadwrite, mode, iparm1, iparm2, filename, iformat, dblprec, variable,
       useiblank, multiblock, std::nullopt, std::nullopt);
}
inline constexpr integer announce_read = 1;   ///< mode of `dispreadwrite`
inline constexpr integer announce_write = 2;  ///< mode of `dispreadwrite`

inline void dispfilereaderror() {
  call(mod_gridvars::dispfilereaderror);
}

}  // namespace mod_p3dgrid::host

namespace mod_p3dgrid {

/// Whether the array is allocated with at least these extents. Checked after every allocation,
/// because a host may return from a failed one. An existing array is used if it is large enough.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool covers(const allocatable<T, Rank>& array, Extent... extent) {
  std::size_t dimension = 0;
  return array.allocated() && ((array.extent(++dimension) >= extent) && ...);
}

/// Allocates the array and reports the status to the host. True if the array can be used.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool allocate_checked(allocatable<T, Rank>& array, Extent... extent) {
  host::checkallocationerror(array.allocate(extent...));
  return covers(array, extent...);
}

/// The same for a staging array. One that an earlier call has left too small is reallocated.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool allocate_staging(allocatable<T, Rank>& array, Extent... extent) {
  if (allocate_checked(array, extent...)) return true;
  array.deallocate();
  return array.allocate(extent...) == allocation_done;
}

}  // namespace mod_p3dgrid
