#include <algorithm>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

/// Refuses extents or variable counts of fewer blocks than are written.
void check_extents(const FileName& filename, const LayoutTraits& layout, integer nblocks,
                   const ExtentViews& extents) {
  const integer needed = layout.header == p3dgrid::HeaderKind::single_block ? 1
                         : layout.dimensions == DimensionKind::none         ? 0
                                                                            : nblocks;
  for (const auto& array : {extents.i, extents.j, extents.k}) {
    if (array.extent(1) >= needed) continue;
    fail_run("cannot write restart file " + path_of(filename) + ": extents of " +
             std::to_string(array.extent(1)) + " blocks, " + std::to_string(needed) +
             " are to be written");
  }
  if (layout.counted_variables && nfvar.allocated() && nfvar.size() < nblocks) {
    fail_run("cannot write restart file " + path_of(filename) + ": nfvar holds " +
             std::to_string(nfvar.size()) + " blocks, " + std::to_string(nblocks) +
             " are to be written");
  }
}

void write_extents(const Unit& unit, DimensionKind dimensions, integer nblocks,
                   const ExtentViews& extents) {
  const bool counts = dimensions == DimensionKind::one_record_with_variables;
  if (counts && !nfvar.allocated()) {
    static_cast<void>(allocate_checked(nfvar, nblocks));
    std::ranges::fill(nfvar.span(), 0);
    if (nfvar.size() < nblocks) fail_run("out of memory for the variable counts");
  }
  if (dimensions == DimensionKind::none) return;
  write_dimensions(unit, dimensions, nblocks, extents, std::as_const(nfvar));
}

}  // namespace

void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, const ExtentViews& extents, integer rsttype,
                          logical multiblock) {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  if (unit.known() && layout.writable) check_extents(filename, layout, nblocks, extents);
  unit.open(filename, OpenStatus::unknown);
  if (!layout.writable) {
    message("TALVEN Writer not implimented!");
    stop_run();
  }
  if (!unit.known()) return;
  p3dgrid::HeaderValues header{.nblocks = nblocks, .nstep = nstep, .dtau = dtau};
  if (layout.header == p3dgrid::HeaderKind::single_block) {
    header.i = extents.i(1);
    header.j = extents.j(1);
    header.k = extents.k(1);
  }
  walk_lead(layout, unit.coding(dblprec), static_cast<bool>(multiblock), std::as_const(header),
            [&](const recordio::WriteList& list) { unit.write(list); });
  write_extents(unit, layout.dimensions, nblocks, extents);
}

void writerestartheader(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                        array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                        array_view<const integer, 1> kdim, integer rsttype,
                        logical multiblock) try {
  write_restart_header(filename, iformat, dblprec, nblocks, {idim, jdim, kdim}, rsttype,
                       multiblock);
} catch (...) {
  end_operation("write restart file", filename);
}

}  // namespace mod_p3dgrid
