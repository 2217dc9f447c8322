#pragma once

#include "mod_p3dgrid/arrays.hpp"
#include "state/host.hpp"

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

/// Allocates arrays of `extent` elements in order, up to the first that fails, and reports one
/// status to the host. True if all can be used.
template <class... Array>
[[nodiscard]] bool allocate_group_checked(std::int64_t extent, Array&... array) {
  integer status = allocation_done;
  ((status = status == allocation_done ? array.allocate(extent) : status), ...);
  host::checkallocationerror(status);
  return (covers(array, extent) && ...);
}

}  // namespace mod_p3dgrid
