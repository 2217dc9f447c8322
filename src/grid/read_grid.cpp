#include <algorithm>
#include <new>
#include <string>

#include "MOD_P3DReader.hpp"
#include "grid/dimension_record.hpp"
#include "grid/grid_file.hpp"
#include "recordio/unit.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/point_numbering.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::FileKind;
using recordio::OpenStatus;
using recordio::Unit;

/// The caller's result arrays and what a grid's body needs besides.
struct GridBody {
  allocatable<float, 2>& xyz;
  allocatable<integer, 1>& iblank;
  logical useiblank;
  logical dblprec;
  PointNumbering numbering;
};

/// Reads the dimension record into arrays that are allocated here, beside those that number the
/// points.
bool read_extents(const Unit& unit, integer nblocks, allocatable<integer, 1>& idim,
                  allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                  PointNumbering& numbering) {
  if (!can_hold_dimensions(unit, nblocks)) return false;
  const bool usable = allocate_group_checked(nblocks, idim, jdim, kdim, numbering.npts,
                                             numbering.istart, numbering.iend);
  if (!usable) {
    unit.fail("no arrays to read into", "unallocated arrays for the extents");
    return false;
  }
  // A null value in the file leaves an extent of 0, not one of chance.
  for (auto* extents : {&idim, &jdim, &kdim}) std::ranges::fill(extents->span(), 0);
  return read_dimension_record(unit, nblocks, {idim, jdim, kdim});
}

/// Numbers the points of all blocks; false if the extents cannot be true.
bool number_points(const Unit& unit, integer nblocks, const allocatable<integer, 1>& idim,
                   const allocatable<integer, 1>& jdim, const allocatable<integer, 1>& kdim,
                   PointNumbering& numbering) {
  integer wrong_block = 0;
  for (integer b = 1; b <= nblocks; ++b) {
    if (debugprint) {
      write_line(" Dimensions of grid " + column(b, 5) + " is " + column(idim(b), 5) +
                 column(jdim(b), 5) + column(kdim(b), 5));
    }
    if (wrong_block == 0 && !numbering.number_block(b, idim(b), jdim(b), kdim(b))) wrong_block = b;
  }
  if (wrong_block == 0) return true;
  fail_on_extents(unit, wrong_block, idim(wrong_block), jdim(wrong_block), kdim(wrong_block));
  return false;
}

/// Reads the coordinate records of all blocks.
bool read_blocks(const Unit& unit, const GridBody& grid, array_view<double, 2> staging) {
  for (integer b = 1; b <= grid.numbering.npts.size(); ++b) {
    if (debugprint) message("Reading grid point data for grid ", b);
    integer* const iblank = grid.useiblank ? grid.iblank.data() : nullptr;
    if (!unit.read(coordinate_record<float>(grid.xyz, staging, iblank, grid.numbering, b))) {
      return false;
    }
  }
  return true;
}

bool read_body(const Unit& unit, GridBody& grid) {
  const std::int64_t total = grid.numbering.total;
  const FileKind kind = coordinate_kind(unit, grid.dblprec);
  if (!unit.can_hold(values_of(total, coordinates_per_point), kind,
                     recordio::Claim::as_far_as_it_goes, std::to_string(total) + " points")) {
    return false;
  }
  bool usable = true;
  if (grid.useiblank) {
    usable = allocate_checked(grid.iblank, total);
    // What a failed read does not reach counts as not blanked.
    std::ranges::fill(grid.iblank.span(), 1);
  }
  usable = allocate_checked(grid.xyz, coordinates_per_point, total) && usable;
  if (!usable || grid.xyz.extent(1) != coordinates_per_point) {
    unit.fail("no arrays to read into", "unallocated arrays for the points");
    return false;
  }
  if (!unit.known()) return true;
  allocatable<double, 2> staging;
  if (kind == FileKind::real8 && !allocate_checked(staging, coordinates_per_point, total)) {
    unit.fail("no memory", "a staging array for the coordinates");
    return false;
  }
  return read_blocks(unit, grid, staging);
}

bool read_grid(const Unit& unit, const FileName& filename, logical multiblock, integer& nblocks,
               allocatable<integer, 1>& idim, allocatable<integer, 1>& jdim,
               allocatable<integer, 1>& kdim, GridBody& grid) {
  integer count = 1;
  unit.open(filename, OpenStatus::old);
  if (multiblock && !unit.read({recordio::scalar(count)})) return false;
  message("Number of grids is ", count);
  nblocks = count;
  if (!read_extents(unit, count, idim, jdim, kdim, grid.numbering) ||
      !number_points(unit, count, idim, jdim, kdim, grid.numbering) || !read_body(unit, grid)) {
    return false;
  }
  unit.close();
  return true;
}

}  // namespace

void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<float, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock) try {
  announce_grid(announce_read, filename, iformat, dblprec, useiblank, multiblock);
  ndim = coordinates_per_point;
  GridBody grid{xyz, iblank, useiblank, dblprec, {}};
  if (!read_grid(Unit(unit_number::grid, iformat), filename, multiblock, nblocks, idim, jdim, kdim,
                 grid)) {
    host::dispfilereaderror();
  }
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("read grid", filename);
}

}  // namespace mod_p3dgrid
