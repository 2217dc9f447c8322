#include <algorithm>
#include <cstdint>
#include <new>

#include "MOD_P3DReader.hpp"
#include "grid/dimension_record.hpp"
#include "grid/grid_file.hpp"
#include "recordio/unit.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::OpenStatus;
using recordio::Unit;

/// Sum of the blocks' points, formed in 32 bits that wrap around.
integer wrapped_points(integer nblocks, const allocatable<integer, 1>& idim,
                       const allocatable<integer, 1>& jdim, const allocatable<integer, 1>& kdim) {
  std::uint32_t sum = 0;
  for (integer b = 1; b <= nblocks; ++b) {
    sum += static_cast<std::uint32_t>(idim(b)) * static_cast<std::uint32_t>(jdim(b)) *
           static_cast<std::uint32_t>(kdim(b));
  }
  return static_cast<integer>(sum);
}

bool read_points(const Unit& unit, integer nblocks, integer& npoints) {
  if (!can_hold_dimensions(unit, nblocks)) return false;
  allocatable<integer, 1> idim;
  allocatable<integer, 1> jdim;
  allocatable<integer, 1> kdim;
  if (!allocate_group_checked(nblocks, idim, jdim, kdim)) {
    unit.fail("no memory", "arrays for the extents");
    return false;
  }
  for (auto* extents : {&idim, &jdim, &kdim}) std::ranges::fill(extents->span(), 0);
  if (!read_dimension_record(unit, nblocks, {idim, jdim, kdim})) return false;
  npoints = wrapped_points(nblocks, idim, jdim, kdim);
  return true;
}

/// @param npoints  null when the dimension record is not wanted
void read_grid_header(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                      logical multiblock, integer* npoints) {
  const Unit unit(unit_number::grid_header, iformat);
  ndim = coordinates_per_point;
  integer count = 1;
  unit.open(filename, OpenStatus::old);
  if (multiblock && !unit.read({recordio::scalar(count)})) {
    return host::dispfilereaderror();
  }
  nblocks = count;
  if (npoints != nullptr && !read_points(unit, count, *npoints)) {
    return host::dispfilereaderror();
  }
  unit.close();
}

}  // namespace

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock) try {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, nullptr);
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("read grid", filename);
}

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock, integer& npoints) try {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, &npoints);
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("read grid", filename);
}

}  // namespace mod_p3dgrid
