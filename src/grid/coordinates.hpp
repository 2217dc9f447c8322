#pragma once

#include "mod_p3dgrid/arrays.hpp"
#include "recordio/record_list.hpp"
#include "state/host.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

/// What reading and writing a grid file have in common.
namespace mod_p3dgrid {

inline constexpr integer coordinates_per_point = 3;

/// Tells the host that a grid file is about to be read or written.
inline void announce_grid(integer mode, const FileName& filename, integer iformat, logical dblprec,
                          logical useiblank, logical multiblock) {
  host::dispreadwrite(mode, 10, 200, filename, iformat, dblprec, std::nullopt, useiblank,
                      multiblock);
}

/// Kind of the coordinates in the file. Text is made of singles, whatever the precision flag says.
[[nodiscard]] inline recordio::FileKind coordinate_kind(const Unit& unit, logical dblprec) {
  return dblprec && unit.stores_kinds() ? recordio::FileKind::real8 : recordio::FileKind::real4;
}

/// The coordinate record of one block: all x, then all y, then all z of its points, then, where the
/// grid has blanking, the blanking value of each point.
/// @param xyz      (coordinate, point)
/// @param staging  array that coordinates of a double-precision file pass through; else empty
/// @param iblank   null for a grid without blanking
template <class Real, class Integer>
[[nodiscard]] auto coordinate_record(array_view<Real, 2> xyz, array_view<double, 2> staging,
                                     Integer* iblank, const PointNumbering& points, integer block) {
  const std::int64_t first = points.before(block);
  const integer count = points.npts(block);
  const std::int64_t stride = xyz.extent(1);
  const auto coordinates =
      recordio::lines(xyz.data() + first * stride, coordinates_per_point, stride, count);
  recordio::RecordList<recordio::MemoryOf<Real>> record{
      recordio::by_way_of(staging, recordio::zero_where_left_out(coordinates))};
  if (iblank != nullptr) record.push_back(recordio::values(iblank + first, count));
  return record;
}

}  // namespace mod_p3dgrid
