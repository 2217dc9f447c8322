#include "support/library_grid.hpp"

#include <stdexcept>

#include "MOD_P3DReader.hpp"
#include "support/host_gridvars.hpp"

namespace interop {
namespace {

using mod_p3dgrid::allocatable;
using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

// The units that a failed read leaves open.
constexpr integer grid_unit = 13;
constexpr integer grid_header_unit = 22;

/// From one column per point to the file's order: all x, all y, all z of each block.
std::vector<float> in_file_order(const std::vector<Extents>& extents,
                                 const allocatable<float, 2>& xyz) {
  std::vector<float> coordinates;
  std::int64_t first = 1;
  for (const Extents& block : extents) {
    const auto points = static_cast<std::int64_t>(points_of(block));
    for (int c = 1; c <= 3; ++c) {
      for (std::int64_t p = first; p < first + points; ++p) coordinates.push_back(xyz(c, p));
    }
    first += points;
  }
  return coordinates;
}

/// The other way round.
std::vector<float> in_columns(const Grid<float>& grid) {
  std::vector<float> columns(grid.coordinates.size());
  std::size_t first = 0;
  for (const Extents& block : grid.extents) {
    const std::size_t points = points_of(block);
    for (std::size_t c = 0; c < 3; ++c) {
      for (std::size_t p = 0; p < points; ++p) {
        columns[3 * (first + p) + c] = grid.coordinates[3 * first + c * points + p];
      }
    }
    first += points;
  }
  return columns;
}

}  // namespace

std::optional<Grid<float>> read_with_library(const std::string& path, const GridLayout& layout) {
  become_host_for(path, layout.planar);
  const int failures = failed_reads();
  integer nblocks = -1;
  integer ndim = -1;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  mod_p3dgrid::readp3dgrid(short_name, layout.encoding, layout.is_double, nblocks, ndim, xyz, idim,
                           jdim, kdim, iblank, layout.has_iblank, layout.multiblock);
  if (failed_reads() != failures) {
    mod_p3dgrid::p3dcloseunit(grid_unit);
    return std::nullopt;
  }
  if (ndim != 3) throw std::runtime_error("a grid of other than three coordinates");
  Grid<float> grid;
  for (integer b = 1; b <= nblocks; ++b) grid.extents.push_back({idim(b), jdim(b), kdim(b)});
  grid.coordinates = in_file_order(grid.extents, xyz);
  grid.iblank.assign(iblank.span().begin(), iblank.span().end());
  return grid;
}

void write_with_library(const std::string& path, const GridLayout& layout,
                        const Grid<float>& grid) {
  become_host_for(path, layout.planar);
  std::vector<integer> idim, jdim, kdim;
  for (const Extents& block : grid.extents) {
    idim.push_back(block[0]);
    jdim.push_back(block[1]);
    kdim.push_back(block[2]);
  }
  const std::vector<float> columns = in_columns(grid);
  mod_p3dgrid::writep3dgrid(short_name, layout.encoding, layout.is_double,
                            static_cast<integer>(grid.extents.size()), 3,
                            {columns.data(), 3, grid.points()}, idim, jdim, kdim, grid.iblank,
                            layout.has_iblank, layout.multiblock);
}

std::optional<GridTotals> read_totals_with_library(const std::string& path,
                                                   const GridLayout& layout) {
  become_host_for(path, layout.planar);
  const int failures = failed_reads();
  integer nblocks = -1;
  integer ndim = -1;
  integer npoints = -1;
  mod_p3dgrid::readp3dgridheader(short_name, layout.encoding, nblocks, ndim, layout.multiblock,
                                 npoints);
  if (failed_reads() == failures) return GridTotals{nblocks, npoints};
  mod_p3dgrid::p3dcloseunit(grid_header_unit);
  return std::nullopt;
}

}  // namespace interop
