#include <algorithm>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "grid/coordinates.hpp"
#include "grid/dimensions.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

struct GridToWrite {
  integer nblocks;
  integer ndim;
  array_view<const float, 2> xyz;
  ExtentViews extents;
  array_view<const integer, 1> iblank;
  logical useiblank;
};

/// Beginning of messages about the file.
std::string grid_file(const FileName& filename) {
  return "cannot write grid " + path_of(filename);
}

[[noreturn]] void refuse(const FileName& filename, const std::string& reason) {
  fail_run(grid_file(filename) + ": " + reason);
}

/// Arrays that do not hold all points are a fatal error.
void check_arrays(const FileName& filename, const GridToWrite& grid, const PointNumbering& points) {
  if (grid.ndim < coordinates_per_point || grid.xyz.extent(1) < grid.ndim ||
      grid.xyz.extent(2) < points.total) {
    refuse(filename, "coordinates for " + std::to_string(grid.xyz.extent(2)) + " points with " +
                         std::to_string(std::min<std::int64_t>(grid.ndim, grid.xyz.extent(1))) +
                         " values each, the extents ask for " + std::to_string(points.total) +
                         " with 3 each");
  }
  if (grid.useiblank && grid.iblank.extent(1) < points.total) {
    refuse(filename, "blanking values for " + std::to_string(grid.iblank.extent(1)) +
                         " points, the extents ask for " + std::to_string(points.total));
  }
}

void write_blocks(const Unit& unit, const GridToWrite& grid, const PointNumbering& points,
                  array_view<double, 2> staging) {
  for (integer b = 1; b <= grid.nblocks; ++b) {
    message("Writing grid point data for grid ", b);
    unit.write(coordinate_record(grid.xyz, staging, grid.useiblank ? grid.iblank.data() : nullptr,
                                 points, b));
  }
}

}  // namespace

void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_view<const float, 2> xyz, array_view<const integer, 1> idim,
                  array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                  array_view<const integer, 1> iblank, logical useiblank, logical multiblock) try {
  announce_grid(host::announce_write, filename, iformat, dblprec, useiblank, multiblock);
  const Unit unit(unit_number::grid, iformat);
  if (unit.known()) {
    const GridToWrite grid{nblocks, ndim, xyz, {idim, jdim, kdim}, iblank, useiblank};
    const PointNumbering points = checked_numbering(grid_file(filename), nblocks, grid.extents);
    check_arrays(filename, grid, points);
    unit.open(filename, OpenStatus::unknown);
    if (multiblock) unit.write({recordio::scalar(std::as_const(nblocks))});
    write_dimensions(unit, DimensionKind::one_record, nblocks, grid.extents);
    allocatable<double, 2> staging;
    if (holds_doubles(unit.coding(dblprec)) && !allocate_checked(staging, ndim, points.total)) {
      refuse(filename, "out of memory for its coordinates in double precision");
    }
    write_blocks(unit, grid, points, staging);
  }
  unit.close();
} catch (...) {
  end_operation("write grid", filename);
}

}  // namespace mod_p3dgrid
