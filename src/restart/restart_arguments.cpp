#include "restart/restart_arguments.hpp"

#include <string>

#include "state/run_end.hpp"

namespace mod_p3dgrid {

void announce_restart(integer mode, const FileName& filename, integer iformat, logical dblprec,
                      const Layout& layout, logical multiblock, std::optional<integer> variable) {
  mod_gridvars::dispreadwrite(mode, layout.iparm1, layout.iparm2, filename, iformat, dblprec,
                              variable, {}, multiblock, {}, {});
}

void refuse_restart(const FileName& filename, const std::string& reason) {
  fail_run("restart file " + std::string(filename.view()) + ": " + reason);
}

void check_layout(const FileName& filename, const Layout& layout, integer rsttype) {
  if (layout.known) return;
  refuse_restart(filename, std::to_string(rsttype) + " is no restart layout");
}

PointNumbering checked_numbering(const FileName& filename, integer nblocks,
                                 const CallerExtents& extents) {
  for (const auto* column : {&extents.idim, &extents.jdim, &extents.kdim}) {
    if (column->extent(1) >= nblocks) continue;
    refuse_restart(filename, "extents of " + std::to_string(column->extent(1)) +
                                 " blocks for a file of " + std::to_string(nblocks));
  }
  PointNumbering points;
  for (auto* array : {&points.npts, &points.istart, &points.iend}) {
    if (array->allocate(nblocks) != allocation_done) refuse_restart(filename, "out of memory");
  }
  for (integer b = 1; b <= nblocks; ++b) {
    if (points.number_block(b, extents.idim(b), extents.jdim(b), extents.kdim(b))) continue;
    refuse_restart(filename, "extents of block " + std::to_string(b) +
                                 " are below 0 or more than 32 bits can count");
  }
  return points;
}

void check_variables(const FileName& filename, integer highest, std::int64_t rows) {
  if (highest <= rows) return;
  refuse_restart(filename, "the section table names variable " + std::to_string(highest) +
                               ", the flow array has " + std::to_string(rows));
}

}  // namespace mod_p3dgrid
