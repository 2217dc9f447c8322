#include <string>

#include "MOD_P3DReader.hpp"
#include "grid/dimensions.hpp"
#include "restart/restart_header.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

[[noreturn]] void halt() {
  write_line("");
  message("  --- CODE HALTED ---");
  stop_run();
}

/// Extents of a block; 0 for a block that the file does not have.
BlockExtents extents_of(const ExtentArrays& all, integer block) {
  return block > all.i.size() ? BlockExtents{} : all.of(block);
}

std::string columns(const BlockExtents& extents) {
  return column(extents.i, 6) + column(extents.j, 6) + column(extents.k, 6);
}

}  // namespace

void checkp3drstrtheader(const FileName& gridfile, integer gridformat, const FileName& rstfile,
                         integer rstformat, logical dblprec, integer rsttype,
                         logical multiblock) try {
  const Unit grid_unit(unit_number::grid_header, gridformat);
  integer ngrid = 1;
  const p3dgrid::Coding coding = grid_unit.open(gridfile, OpenStatus::old);
  if (multiblock) grid_unit.read({recordio::scalar(ngrid)});
  integer nrst = 1;
  ExtentArrays restart;
  try {
    read_restart_header(
        {{rstfile, rstformat, dblprec, rsttype, multiblock}, unit_number::restart_read}, nrst,
        restart);
  } catch (const FailedRead&) {
    host::dispfilereaderror();
    return p3dcloseunit(unit_number::restart_read);
  }
  p3dcloseunit(unit_number::restart_read);
  if (multiblock && ngrid != nrst) {
    write_line("");
    message("Number of blocks in Grid do not match the Restart file");
    message("Number of Grid blocks   : ", ngrid);
    message("Number of Restart blocks: ", nrst);
    halt();
  }
  ExtentArrays grid;
  require_room_for_dimensions(grid_unit, coding, ngrid);
  allocate_extents(grid_unit, ngrid, grid.targets());
  read_dimensions(grid_unit, coding, DimensionKind::one_record, ngrid, grid.targets());
  bool differ = false;
  for (integer b = 1; b <= ngrid; ++b) {
    const BlockExtents of_grid = extents_of(grid, b);
    const BlockExtents of_restart = extents_of(restart, b);
    if (of_grid == of_restart) continue;
    write_line("");
    message("Indecies for block ", b, " in grid and restart file do not match.");
    message("              i     j     k  ");
    write_line(" Grid   : " + columns(of_grid));
    write_line(" Restart: " + columns(of_restart));
    differ = true;
  }
  p3dcloseunit(unit_number::grid_header);
  p3dcloseunit(unit_number::spare);
  if (differ) halt();
} catch (...) {
  end_operation("check restart file", rstfile);
}

}  // namespace mod_p3dgrid
