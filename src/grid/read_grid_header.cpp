#include <cstdint>

#include "MOD_P3DReader.hpp"
#include "grid/coordinates.hpp"
#include "grid/dimensions.hpp"

namespace mod_p3dgrid {
namespace {

/// Points of all blocks, summed in 32 bits with wrap-around.
integer wrapped_points(const ExtentArrays& extents) {
  const auto& [i, j, k] = extents;
  std::uint32_t sum = 0;
  for (integer b = 1; b <= i.size(); ++b) {
    sum += static_cast<std::uint32_t>(i(b)) * static_cast<std::uint32_t>(j(b)) *
           static_cast<std::uint32_t>(k(b));
  }
  return static_cast<integer>(sum);
}

/// @param npoints  null to read the block count alone
void read_grid_header(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                      logical multiblock, integer* npoints) try {
  const Unit unit(unit_number::grid_header, iformat);
  ndim = coordinates_per_point;
  integer count = 1;
  const p3dgrid::Coding coding = unit.open(filename, OpenStatus::old);
  if (multiblock) unit.read({recordio::scalar(count)});
  nblocks = count;
  if (npoints != nullptr) {
    require_room_for_dimensions(unit, coding, count);
    ExtentArrays extents;
    allocate_extents(unit, count, extents.targets());
    read_dimensions(unit, coding, DimensionKind::one_record, count, extents.targets());
    *npoints = wrapped_points(extents);
  }
  unit.close();
} catch (...) {
  end_operation("read grid", filename);
}

}  // namespace

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock) {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, nullptr);
}

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock, integer& npoints) {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, &npoints);
}

}  // namespace mod_p3dgrid
