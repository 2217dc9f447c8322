#pragma once

#include "format/header.hpp"
#include "mod_p3dgrid/arrays.hpp"
#include "recordio/record_list.hpp"
#include "state/host.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

namespace mod_p3dgrid {

inline constexpr integer coordinates_per_point = 3;

inline void announce_grid(integer mode, const FileName& filename, integer iformat, logical dblprec,
                          logical useiblank, logical multiblock) {
  host::dispreadwrite(mode, 10, 200, filename, iformat, dblprec, std::nullopt, useiblank,
                      multiblock);
}

/// The coordinate record of one block: all x, all y and, in three dimensions, all z of its points,
/// then the blanking values if the grid has them.
/// @param xyz      (coordinate, point)
/// @param staging  staging array of a file of the other kind of reals; else empty
/// @param iblank   null for a grid without blanking
template <class Real, class Integer>
[[nodiscard]] auto coordinate_record(const p3dgrid::Coding& coding, array_view<Real, 2> xyz,
                                     array_view<p3dgrid::OtherReal<Real>, 2> staging,
                                     Integer* iblank, const PointNumbering& points, integer block) {
  const std::int64_t first = points.before(block);
  const integer count = points.npts(block);
  const std::int64_t stride = xyz.extent(1);
  auto coordinates = recordio::lines(xyz.data() + first * stride, axes_of(coding), stride, count);
  coordinates.zero_where_left_out = true;
  recordio::RecordList<recordio::MemoryOf<Real>> record{
      recordio::through_staging(staging, coordinates)};
  if (iblank != nullptr) record.push_back(recordio::values(iblank + first, count));
  return record;
}

}  // namespace mod_p3dgrid
