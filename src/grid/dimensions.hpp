#pragma once

#include <algorithm>
#include <array>

#include "format/header.hpp"
#include "mod_p3dgrid/arrays.hpp"
#include "state/host.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

namespace mod_p3dgrid {

using p3dgrid::DimensionKind;

using ExtentTargets = std::array<allocatable<integer, 1>*, 3>;

/// Extents that are read from a header and owned by the operation.
struct ExtentArrays {
  allocatable<integer, 1> i, j, k;

  [[nodiscard]] ExtentTargets targets() { return {&i, &j, &k}; }
  [[nodiscard]] BlockExtents of(integer block) const { return {i(block), j(block), k(block)}; }
};

/// Allocates an entry per block in the extents and in `others`, in order, up to the first that
/// fails, and reports one status to the host. Sets the extents to 0, so that values that the file
/// leaves out are not uninitialised. Throws `FailedRead` if arrays cannot be used.
template <class... Others>
void allocate_extents(const Unit& unit, integer nblocks, const ExtentTargets& extents,
                      Others&... others) {
  const auto allocate = [nblocks](auto&... array) {
    integer status = allocation_done;
    // cppcheck-suppress knownConditionTrueFalse ; it does not see the repetition
    ((status = status == allocation_done ? array.allocate(nblocks) : status), ...);
    host::checkallocationerror(status);
    return (covers(array, nblocks) && ...);
  };
  const auto& [i, j, k] = extents;
  unit.require_array(allocate(*i, *j, *k, others...), "unallocated arrays for the extents");
  for (auto* array : extents) std::ranges::fill(array->span(), 0);
}

/// Reads block dimensions. Values that the file leaves out, or that a failed read does not reach,
/// are unchanged. Throws `FailedRead`.
/// @param functions  variable counts of function files; else null
void read_dimensions(const Unit& unit, const p3dgrid::Coding& coding, DimensionKind kind,
                     integer nblocks, const ExtentTargets& extents,
                     allocatable<integer, 1>* functions = nullptr);

/// Writes block dimensions. Fewer extents than blocks are a fatal error.
/// @param functions  variable counts of function files; else empty
void write_dimensions(const Unit& unit, const p3dgrid::Coding& coding, DimensionKind kind,
                      integer nblocks, const ExtentViews& extents, integer_view functions = {});

/// In two dimensions k extents other than 1 are a fatal error.
/// @param file  beginning of the error message
void check_planes(const std::string& file, const p3dgrid::Coding& coding, integer nblocks,
                  const ExtentViews& extents);

/// Throws `FailedRead` if arrays for `nblocks` blocks must not be allocated: above a fixed number
/// of blocks, if the file is too short for their extents.
/// @param claim  `one_record` for a dimension record, `records` if each block has its own
void require_room_for_dimensions(const Unit& unit, const p3dgrid::Coding& coding, integer nblocks,
                                 recordio::Claim claim = recordio::Claim::one_record);

/// Throws `FailedRead` for invalid extents.
[[noreturn]] void fail_on_extents(const Unit& unit, integer block, const BlockExtents& extents);

}  // namespace mod_p3dgrid
