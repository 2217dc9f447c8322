#include <algorithm>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "grid/coordinates.hpp"
#include "grid/dimensions.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Beginning of messages about the file.
std::string grid_file(const FileName& filename) {
  return "cannot write grid " + path_of(filename);
}

[[noreturn]] void refuse(const FileName& filename, const std::string& reason) {
  fail_run(grid_file(filename) + ": " + reason);
}

template <class Real>
void check_arrays(const FileName& filename, integer ndim, array_view<const Real, 2> xyz,
                  const integer_view* iblank, const PointNumbering& points) {
  if (ndim < coordinates_per_point || xyz.extent(1) < ndim || xyz.extent(2) < points.total) {
    refuse(filename, "coordinates for " + std::to_string(xyz.extent(2)) + " points with " +
                         std::to_string(std::min<std::int64_t>(ndim, xyz.extent(1))) +
                         " values each, the extents ask for " + std::to_string(points.total) +
                         " with 3 each");
  }
  if (iblank != nullptr && iblank->extent(1) < points.total) {
    refuse(filename, "blanking values for " + std::to_string(iblank->extent(1)) +
                         " points, the extents ask for " + std::to_string(points.total));
  }
}

template <class Real>
void write_grid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                integer ndim, array_view<const Real, 2> xyz, const ExtentViews& extents,
                integer_view iblank, logical useiblank, logical multiblock) try {
  announce_grid(host::announce_write, filename, iformat, dblprec, useiblank, multiblock);
  const Unit unit(unit_number::grid, iformat);
  if (unit.known()) {
    const p3dgrid::Coding coding = unit.coding(filename, dblprec);
    const PointNumbering points = checked_numbering(grid_file(filename), nblocks, extents);
    check_planes(grid_file(filename), coding, nblocks, extents);
    check_arrays(filename, ndim, xyz, useiblank ? &iblank : nullptr, points);
    unit.open(filename, OpenStatus::unknown);
    if (multiblock) unit.write({recordio::scalar(std::as_const(nblocks))});
    write_dimensions(unit, coding, DimensionKind::one_record, nblocks, extents);
    using Staged = p3dgrid::OtherReal<Real>;
    allocatable<Staged, 2> staging;
    if (p3dgrid::needs_staging<Real>(coding) && !allocate_checked(staging, ndim, points.total)) {
      refuse(filename, std::string("out of memory for its coordinates in ") +
                           p3dgrid::precision_name<Staged>() + " precision");
    }
    for (integer b = 1; b <= nblocks; ++b) {
      message("Writing grid point data for grid ", b);
      unit.write(coordinate_record(coding, xyz, array_view<Staged, 2>(staging),
                                   useiblank ? iblank.data() : nullptr, points, b));
    }
  }
  unit.close();
} catch (...) {
  end_operation("write grid", filename);
}

}  // namespace

void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_view<const float, 2> xyz, integer_view idim,
                  integer_view jdim, integer_view kdim, integer_view iblank, logical useiblank,
                  logical multiblock) {
  write_grid(filename, iformat, dblprec, nblocks, ndim, xyz, {idim, jdim, kdim}, iblank, useiblank,
             multiblock);
}

void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_argument<const double, 2> xyz, integer_view idim,
                  integer_view jdim, integer_view kdim, integer_view iblank, logical useiblank,
                  logical multiblock) {
  write_grid<double>(filename, iformat, dblprec, nblocks, ndim, xyz, {idim, jdim, kdim}, iblank,
                     useiblank, multiblock);
}

}  // namespace mod_p3dgrid
