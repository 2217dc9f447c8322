#pragma once

#include <optional>

#include "recordio/record_list.hpp"
#include "state/host.hpp"

/// What reading and writing a grid file have in common.
namespace mod_p3dgrid {

inline constexpr integer coordinates_per_point = 3;

/// Tells the host that a grid file is about to be read or written.
/// @param mode  `announce_read` or `announce_write`
inline void announce_grid(integer mode, const FileName& filename, integer iformat, logical dblprec,
                          logical useiblank, logical multiblock) {
  host::call(mod_gridvars::dispreadwrite, mode, 10, 200, filename, iformat, dblprec, std::nullopt,
             useiblank, multiblock, std::nullopt, std::nullopt);
}
inline constexpr integer announce_read = 1;
inline constexpr integer announce_write = 2;

/// The coordinate record of one block: all x, then all y, then all z of its points, then, where the
/// grid has blanking, the blanking value of each point.
/// @param xyz     x of the block's first point
/// @param ndim    values from one point to the next in `xyz`
/// @param iblank  blanking value of the block's first point; null for a grid without blanking
template <class Real, class Integer>
[[nodiscard]] auto coordinate_record(Real* xyz, std::int64_t ndim, Integer* iblank,
                                     integer points) {
  recordio::RecordList<recordio::MemoryOf<Real>> record{
      recordio::lines(xyz, coordinates_per_point, ndim, points)};
  if (iblank != nullptr) record.push_back(recordio::values(iblank, points));
  return record;
}

}  // namespace mod_p3dgrid
