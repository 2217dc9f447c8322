#include <string>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "format/mismatch_report.hpp"
#include "restart/restart_file.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

void print(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) write_line(line);
}

[[noreturn]] void halt() {
  print(p3dgrid::end_of_report());
  stop_run();
}

/// Extents of a block; 0 for a block that the file does not have.
BlockExtents extents_of(const ExtentArrays& all, integer block) {
  return block > all.i.size() ? BlockExtents{} : all.of(block);
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
    print(p3dgrid::report_of_counts(ngrid, nrst));
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
    print(p3dgrid::report_of_block(b, of_grid, of_restart));
    differ = true;
  }
  p3dcloseunit(unit_number::grid_header);
  p3dcloseunit(unit_number::spare);
  if (differ) halt();
} catch (...) {
  end_operation("check restart file", rstfile);
}

}  // namespace mod_p3dgrid
