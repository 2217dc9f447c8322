#include <algorithm>
#include <cstdint>
#include <string>

#include "MOD_P3DReader.hpp"
#include "grid/coordinates.hpp"
#include "grid/dimensions.hpp"
#include "state/messages.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::FileKind;

template <class Real>
struct GridBody {
  allocatable<Real, 2>& xyz;
  allocatable<integer, 1>& iblank;
  logical useiblank;
  p3dgrid::Coding coding;
  PointNumbering numbering;

  /// Sets the third coordinates of a block to 0.
  void clear_third(integer block) const {
    Real* const first = xyz.data() + numbering.before(block) * coordinates_per_point;
    for (std::int64_t p = 0; p < numbering.npts(block); ++p) {
      first[p * coordinates_per_point + 2] = 0;
    }
  }
};

void number_points(const Unit& unit, integer nblocks, const ExtentViews& extents,
                   PointNumbering& numbering) {
  integer wrong_block = 0;
  for (integer b = 1; b <= nblocks; ++b) {
    const auto [i, j, k] = extents.of(b);
    if (debugprint) {
      write_line(" Dimensions of grid " + column(b, 5) + " is " + column(i, 5) + column(j, 5) +
                 column(k, 5));
    }
    if (wrong_block == 0 && !numbering.number_block(b, {i, j, k})) wrong_block = b;
  }
  if (wrong_block != 0) fail_on_extents(unit, wrong_block, extents.of(wrong_block));
}

template <class Real>
void read_body(const Unit& unit, GridBody<Real>& grid) {
  const std::int64_t total = grid.numbering.total;
  const FileKind kind = p3dgrid::real_kind(grid.coding);
  unit.require_room(values_of(total, axes_of(grid.coding)), kind, recordio::Claim::may_be_truncated,
                    std::to_string(total) + " points");
  bool usable = true;
  if (grid.useiblank) {
    usable = allocate_checked(grid.iblank, total);
    // Points that a failed read does not reach are not blanked.
    std::ranges::fill(grid.iblank.span(), 1);
  }
  usable = allocate_checked(grid.xyz, coordinates_per_point, total) && usable;
  unit.require_array(usable && grid.xyz.extent(1) == coordinates_per_point,
                     "unallocated arrays for the points");
  if (!unit.known()) return;
  allocatable<p3dgrid::OtherReal<Real>, 2> staging;
  if (p3dgrid::needs_staging<Real>(grid.coding)) {
    unit.require_array(allocate_checked(staging, coordinates_per_point, total),
                       "a staging array for the coordinates");
  }
  for (integer b = 1; b <= grid.numbering.npts.size(); ++b) {
    if (debugprint) message("Reading grid point data for grid ", b);
    integer* const iblank = grid.useiblank ? grid.iblank.data() : nullptr;
    if (is_planar(grid.coding)) grid.clear_third(b);
    unit.read(coordinate_record<Real>(grid.coding, grid.xyz, staging, iblank, grid.numbering, b));
  }
}

template <class Real>
void read_grid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
               integer& ndim, allocatable<Real, 2>& xyz, const ExtentTargets& extents,
               allocatable<integer, 1>& iblank, logical useiblank, logical multiblock) try {
  announce_grid(host::announce_read, filename, iformat, dblprec, useiblank, multiblock);
  ndim = coordinates_per_point;
  const Unit unit(unit_number::grid, iformat);
  unit.open(filename, OpenStatus::old);
  integer count = 1;
  if (multiblock) unit.read({recordio::scalar(count)});
  message("Number of grids is ", count);
  nblocks = count;
  GridBody<Real> grid{xyz, iblank, useiblank, unit.coding(filename, dblprec), {}};
  require_room_for_dimensions(unit, grid.coding, count);
  allocate_extents(unit, count, extents, grid.numbering.npts, grid.numbering.iend);
  read_dimensions(unit, grid.coding, DimensionKind::one_record, count, extents);
  number_points(unit, count, {*extents[0], *extents[1], *extents[2]}, grid.numbering);
  read_body(unit, grid);
  unit.close();
} catch (...) {
  end_operation("read grid", filename);
}

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

void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<float, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock) {
  read_grid(filename, iformat, dblprec, nblocks, ndim, xyz, {&idim, &jdim, &kdim}, iblank,
            useiblank, multiblock);
}

void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<double, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock) {
  read_grid(filename, iformat, dblprec, nblocks, ndim, xyz, {&idim, &jdim, &kdim}, iblank,
            useiblank, multiblock);
}

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock) {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, nullptr);
}

void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock, integer& npoints) {
  read_grid_header(filename, iformat, nblocks, ndim, multiblock, &npoints);
}

}  // namespace mod_p3dgrid
