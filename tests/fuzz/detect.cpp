/// Finds out what a file is. What fits in one way to its last byte must be read by that.

#include "p3dgrid/detect.hpp"

#include "p3dgrid/layout.hpp"
#include "target.hpp"

namespace fuzz {

using namespace mod_p3dgrid;

namespace {

bool is_readable(const p3dgrid::Reading& reading) {
  return reading.checked && reading.fit.whole();
}

void read_grid(const p3dgrid::Reading& reading) {
  const p3dgrid::GridForm& form = reading.grid();
  p3dsetcoding([&](std::string_view) { return p3dgrid::stated_as(form.coding); });
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  const Outcome outcome = attempt([&] {
    readp3dgrid("grid", static_cast<integer>(form.coding.encoding), holds_doubles(form.coding),
                nblocks, ndim, xyz, idim, jdim, kdim, iblank, form.iblank, form.multiblock);
  });
  require(outcome == Outcome::done, "what has been found to be a grid is read");
  require(nblocks == reading.extents->blocks(), "as many blocks are read as have been found");
}

void look_at(const p3dgrid::Detection& found) {
  require(found.fitting.empty() || found.nearest.empty(), "what fits leaves nothing to be near");
  for (const p3dgrid::Reading& reading : found.fitting) {
    require(!p3dgrid::describe(reading).empty(), "a reading is described");
  }
}

}  // namespace

void place_files(const Options& options, Content content) {
  place_file(options, "grid", content);
}

void run_operation(const Options& options) {
  const std::string path = scratch_path("grid");
  p3dgrid::StatedGridForm stated;
  if (has(options, multiblock)) stated.multiblock = true;
  if (has(options, blanking)) stated.iblank = true;
  const p3dgrid::Detection grid = p3dgrid::detect_grid(path, stated);
  look_at(grid);
  look_at(p3dgrid::detect_any(path));
  p3dgrid::StatedRestartForm layout;
  if (has(options, header_only)) layout.layout = p3dgrid::Layout{layout_code(options)};
  if (!layout.layout || p3dgrid::traits_of(*layout.layout).known) {
    look_at(p3dgrid::detect_restart(path, layout,
                                    grid.fitting.empty() ? nullptr : grid.fitting.front().extents));
  }
  if (grid.fitting.size() == 1 && is_readable(grid.fitting.front())) {
    read_grid(grid.fitting.front());
  }
}

}  // namespace fuzz
