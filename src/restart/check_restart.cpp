#include <algorithm>
#include <new>
#include <string>

#include "MOD_P3DReader.hpp"
#include "grid/dimension_record.hpp"
#include "recordio/unit.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::OpenStatus;
using recordio::Unit;

[[noreturn]] void halt() {
  write_line("");
  message("  --- CODE HALTED ---");
  stop_run();
}

void report_block_counts(integer ngrid, integer nrst) {
  write_line("");
  message("Number of blocks in Grid do not match the Restart file");
  message("Number of Grid blocks   : ", ngrid);
  message("Number of Restart blocks: ", nrst);
}

struct Extents {
  integer i;
  integer j;
  integer k;
  friend bool operator==(const Extents&, const Extents&) = default;
};

std::string columns(const Extents& extents) {
  constexpr std::size_t width = 6;
  return column(extents.i, width) + column(extents.j, width) + column(extents.k, width);
}

void report_block(integer block, const Extents& grid, const Extents& restart) {
  write_line("");
  message("Indecies for block ", block, " in grid and restart file do not match.");
  message("              i     j     k  ");
  write_line(" Grid   : " + columns(grid));
  write_line(" Restart: " + columns(restart));
}

/// Reads the grid's extents; false if that fails.
bool read_grid_extents(const Unit& unit, integer ngrid, HeaderExtents& grid) {
  auto& [igrid, jgrid, kgrid] = grid;
  if (!can_hold_dimensions(unit, ngrid)) return false;
  if (!allocate_group_checked(std::max(ngrid, 0), igrid, jgrid, kgrid)) {
    unit.fail("no memory", "arrays for the extents");
    return false;
  }
  for (auto* extents : {&igrid, &jgrid, &kgrid}) std::ranges::fill(extents->span(), 0);
  return read_dimension_record(unit, ngrid, {igrid, jgrid, kgrid});
}

/// Extents of a block; 0 for one that the file does not have.
Extents extents_of(const HeaderExtents& all, integer block) {
  if (block > all.IENG.size()) return {0, 0, 0};
  return {all.IENG(block), all.JENG(block), all.KENG(block)};
}

}  // namespace

void checkp3drstrtheader(const FileName& gridfile, integer gridformat, const FileName& rstfile,
                         integer rstformat, logical dblprec, integer rsttype,
                         logical multiblock) try {
  const Unit grid_unit(unit_number::grid_header, gridformat);
  integer ngrid = 1;
  grid_unit.open(gridfile, OpenStatus::old);
  if (multiblock && !grid_unit.read({recordio::scalar(ngrid)})) {
    return host::dispfilereaderror();
  }
  integer nrst = 1;
  HeaderExtents restart;
  const bool header_read =
      read_restart_header(rstfile, rstformat, dblprec, nrst, rsttype, multiblock, restart);
  p3dcloseunit(unit_number::restart_read);
  // The host knows already; there is nothing to compare with.
  if (!header_read) return;
  if (multiblock && ngrid != nrst) {
    report_block_counts(ngrid, nrst);
    halt();
  }
  HeaderExtents grid;
  if (!read_grid_extents(grid_unit, ngrid, grid)) return host::dispfilereaderror();
  bool differ = false;
  for (integer b = 1; b <= ngrid; ++b) {
    const Extents of_grid = extents_of(grid, b);
    const Extents of_restart = extents_of(restart, b);
    if (of_grid == of_restart) continue;
    report_block(b, of_grid, of_restart);
    differ = true;
  }
  p3dcloseunit(unit_number::grid_header);
  p3dcloseunit(unit_number::spare);
  if (differ) halt();
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("check restart file", rstfile);
}

}  // namespace mod_p3dgrid
