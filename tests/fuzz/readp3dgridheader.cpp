/// Reads block counts, and with them the extents, of grids.

#include "target.hpp"

namespace fuzz {

using namespace mod_p3dgrid;

void place_files(const Options& options, Content content) {
  place_file(options, "grid", content);
}

void run_operation(const Options& options) {
  constexpr integer untouched = -77;
  integer nblocks = untouched;
  integer ndim = 0;
  integer npoints = untouched;
  const Outcome outcome = attempt([&] {
    const integer format = format_of(options.format);
    if (has(options, header_only)) {
      readp3dgridheader("grid", format, nblocks, ndim, has(options, multiblock));
    } else {
      readp3dgridheader("grid", format, nblocks, ndim, has(options, multiblock), npoints);
    }
  });
  require(ndim == 3, "a grid has three dimensions");
  if (outcome != Outcome::done) {
    require(npoints == untouched, "a failed read leaves the point count alone");
    return;
  }
  expect_all_closed();
  require(has(options, multiblock) || nblocks == 1, "without a block count there is one block");
}

}  // namespace fuzz
