/// Reads whole grids.

#include "target.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;

struct Grid {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
};

void check(const Grid& grid, const Options& options) {
  require(grid.ndim == 3, "a grid has three dimensions");
  std::int64_t points = 0;
  for (integer b = 1; b <= grid.nblocks; ++b) {
    points += std::int64_t{grid.idim(b)} * grid.jdim(b) * grid.kdim(b);
  }
  if (has(options, results_allocated)) return;
  require(grid.xyz.allocated() && grid.xyz.extent(1) == 3 && grid.xyz.extent(2) == points,
          "coordinates have the grid's points");
  require(grid.iblank.allocated() == has(options, blanking), "blanking is there if asked for");
  require(!grid.iblank.allocated() || grid.iblank.extent(1) == points, "each point is blanked");
  if (is_format(options.format)) touch(grid.xyz);
  touch(grid.iblank);
}

}  // namespace

void place_files(const Options& options, Content content) {
  place_file(options, "grid", content);
}

void run_operation(const Options& options) {
  Grid grid;
  if (has(options, results_allocated)) {
    require(grid.xyz.allocate(3, 4) == 0 && grid.iblank.allocate(2) == 0, "memory suffices");
  }
  const Outcome outcome = attempt([&] {
    readp3dgrid("grid", format_of(options.format), has(options, double_precision), grid.nblocks,
                grid.ndim, grid.xyz, grid.idim, grid.jdim, grid.kdim, grid.iblank,
                has(options, blanking), has(options, multiblock));
  });
  if (outcome != Outcome::done) return;
  expect_all_closed();
  check(grid, options);
}

}  // namespace fuzz
