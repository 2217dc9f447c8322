#pragma once

#include "mod_p3dgrid/arrays.hpp"
#include "state/host.hpp"

namespace mod_p3dgrid {

/// Whether the array has at least these extents. Asked after every checked allocation, because a
/// host may return from a failed one: an array that exists already serves as far as it is large
/// enough.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool covers(const allocatable<T, Rank>& array, Extent... extent) {
  std::size_t dimension = 0;
  return array.allocated() && ((array.extent(++dimension) >= extent) && ...);
}

/// Allocates a staging array and hands the status to the host. One that an earlier call has left
/// is reported, and then made anew if it is too small. True when it can be used as asked.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool allocate_staging(allocatable<T, Rank>& array, Extent... extent) {
  host::checkallocationerror(array.allocate(extent...));
  if (covers(array, extent...)) return true;
  array.deallocate();
  return array.allocate(extent...) == allocation_done;
}

/// Allocates the array and hands the status to the host. True when it can be used as asked.
template <class T, std::size_t Rank, class... Extent>
[[nodiscard]] bool allocate_checked(allocatable<T, Rank>& array, Extent... extent) {
  host::checkallocationerror(array.allocate(extent...));
  return covers(array, extent...);
}

/// Allocates one-dimensional arrays of `extent` elements in order, up to the first that fails, and
/// hands the one status to the host. True when all can be used as asked.
template <class... Array>
[[nodiscard]] bool allocate_group_checked(std::int64_t extent, Array&... array) {
  integer status = allocation_done;
  ((status = status == allocation_done ? array.allocate(extent) : status), ...);
  host::checkallocationerror(status);
  return (covers(array, extent) && ...);
}

}  // namespace mod_p3dgrid
