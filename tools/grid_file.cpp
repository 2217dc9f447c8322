#include "grid_file.hpp"

#include <algorithm>
#include <new>

#include "console.hpp"
#include "extents.hpp"
#include "failure.hpp"
#include "paths.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

void require_memory(integer allocation_status) {
  if (allocation_status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

logical precision_flag(const GridForm& form) {
  return form.coding.precision == Precision::double_precision;
}

Failure with_advice(ExitStatus status, const std::string& message, const std::string& advice) {
  return {status, message, advice.empty() ? "" : "; " + advice};
}

// The library skips what is left of a record and never looks behind the last block, so a file of
// another form can be read without a complaint, into nonsense. Lengths give it away.
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
  throw with_advice(ExitStatus::mismatch, path + ": is not " + describe(form) + ": " + fit.what,
                    advice(path, stated_as(form)));
}

}  // namespace

std::int64_t Grid::points_of(integer block) const {
  return std::int64_t{idim(block)} * jdim(block) * kdim(block);
}

void allocate_extents(Grid& grid, integer blocks) {
  grid.blocks = blocks;
  require_memory(grid.idim.allocate(blocks));
  require_memory(grid.jdim.allocate(blocks));
  require_memory(grid.kdim.allocate(blocks));
}

void allocate_coordinates(Grid& grid) {
  std::int64_t points = 0;
  for (integer block = 1; block <= grid.blocks; ++block) points += grid.points_of(block);
  require_memory(grid.xyz.allocate(grid.ndim, points));
}

void allocate_blanking(Grid& grid) {
  require_memory(grid.iblank.allocate(grid.points()));
  std::ranges::fill(grid.iblank.span(), 1);
}

Grid first_block(const Grid& grid) {
  Grid first;
  allocate_extents(first, 1);
  first.idim(1) = grid.idim(1);
  first.jdim(1) = grid.jdim(1);
  first.kdim(1) = grid.kdim(1);
  allocate_coordinates(first);
  std::copy_n(grid.xyz.data(), first.xyz.size(), first.xyz.data());
  return first;
}

Grid read_grid(const std::string& path, const Found& found) {
  const GridForm& form = found.grid();
  Grid grid;
  try {
    mod_p3dgrid::readp3dgrid(name_for(path, form.coding.byte_order),
                             static_cast<integer>(form.coding.encoding), precision_flag(form),
                             grid.blocks, grid.ndim, grid.xyz, grid.idim, grid.jdim, grid.kdim,
                             grid.iblank, form.iblank, form.multiblock);
  } catch (const Unreadable& failure) {
    throw with_advice(failure.status(), failure.what(), advice(path, stated_as(form)));
  }
  if (grid.blocks < 1) {
    throw Failure(ExitStatus::mismatch,
                  path + ": has a block count of " + std::to_string(grid.blocks));
  }
  if (!found.reading.fit.whole() || found.stated) require_form(path, form);
  return grid;
}

Extents extents_of(const Grid& grid) {
  return extents_from(grid.idim, grid.jdim, grid.kdim);
}

void write_grid(const std::string& path, const GridForm& form, const Grid& grid) {
  const std::int64_t coordinates = holds_doubles(form.coding) ? 24 : 12;
  const std::int64_t blanking = form.iblank ? 4 : 0;
  // How long text becomes shows only when it is there.
  const bool known = form.coding.encoding != Encoding::formatted;
  expect_output(known ? grid.points() * (coordinates + blanking) : 0);
  mod_p3dgrid::writep3dgrid(name_for(path, form.coding.byte_order),
                            static_cast<integer>(form.coding.encoding), precision_flag(form),
                            grid.blocks, grid.ndim, grid.xyz, grid.idim, grid.jdim, grid.kdim,
                            grid.iblank, form.iblank, form.multiblock);
}

}  // namespace p3dgrid::tool
