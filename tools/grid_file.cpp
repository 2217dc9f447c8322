#include "grid_file.hpp"

#include <algorithm>

#include "console.hpp"
#include "failure.hpp"
#include "library.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

// The library skips the rest of each record and ignores what follows the last block, so it may read
// a file of another form without an error. The record lengths reveal it.
void require_form(const std::string& path, const GridForm& form) {
  const Fit fit = fit_of(path, form);
  if (fit.whole()) return;
  if (only_followed(fit, form.coding.encoding)) {
    return print_note(path + ": " + fit.what + ", and are left out");
  }
  GridForm with_blanking = form;
  with_blanking.iblank = true;
  if (form.coding.encoding == Encoding::unformatted && fit_of(path, with_blanking).whole()) {
    print_note(path + ": holds blanking values, which are left out; --grid-iblank yes reads them");
    return;
  }
  const std::string help = advice(path, stated_as(form));
  throw Mismatch(path + ": is not " + describe(form) + ": " + fit.what,
                 help.empty() ? "" : "; " + help);
}

}  // namespace

std::int64_t Grid::points_of(integer block) const {
  return std::int64_t{idim(block)} * jdim(block) * kdim(block);
}

Grid grid_with(const Extents& extents) {
  Grid grid;
  grid.blocks = extents.blocks();
  const auto set = [&](allocatable<integer, 1>& array, const std::vector<integer>& values) {
    require_memory(array.allocate(grid.blocks));
    std::ranges::copy(values, array.data());
  };
  set(grid.idim, extents.i);
  set(grid.jdim, extents.j);
  set(grid.kdim, extents.k);
  require_memory(grid.xyz.allocate(grid.ndim, extents.points()));
  return grid;
}

void allocate_blanking(Grid& grid) {
  require_memory(grid.iblank.allocate(grid.points()));
  std::ranges::fill(grid.iblank.span(), 1);
}

Grid read_grid(const std::string& path, const Found& found) {
  const GridForm& form = found.grid();
  Grid grid;
  with_advice(
      [&] {
        mod_p3dgrid::readp3dgrid(name_for(path, form.coding), format_code(form.coding),
                                 precision_flag(form.coding), grid.blocks, grid.ndim, grid.xyz,
                                 grid.idim, grid.jdim, grid.kdim, grid.iblank, form.iblank,
                                 form.multiblock);
      },
      [&] { return advice(path, stated_as(form)); });
  if (grid.blocks < 1) {
    throw Mismatch(path + ": has a block count of " + std::to_string(grid.blocks));
  }
  if (!found.reading.fit.whole() || found.stated) require_form(path, form);
  return grid;
}

Extents extents_of(const Grid& grid) {
  return extents_from(grid.idim, grid.jdim, grid.kdim);
}

void write_grid(const std::string& path, const GridForm& form, const Grid& grid) {
  expect_values(form.coding, axes_of(form.coding) * grid.points(), form.iblank ? grid.points() : 0);
  mod_p3dgrid::writep3dgrid(name_for(path, form.coding), format_code(form.coding),
                            precision_flag(form.coding), grid.blocks, grid.ndim, grid.xyz,
                            grid.idim, grid.jdim, grid.kdim, grid.iblank, form.iblank,
                            form.multiblock);
}

}  // namespace p3dgrid::tool
