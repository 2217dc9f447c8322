#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "grid/dimension_record.hpp"
#include "recordio/unit.hpp"
#include "restart/header_records.hpp"
#include "restart/layout.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::OpenStatus;
using recordio::scalar;
using recordio::Unit;

using Extents = array_view<const integer, 1>;

/// Refuses extents or variable counts of fewer blocks than are to be written, before the file is
/// touched.
void check_extents(const FileName& filename, const Layout& layout, integer nblocks,
                   std::initializer_list<const Extents*> columns) {
  const integer needed = layout.header == HeaderKind::single_block  ? 1
                         : layout.dimensions == DimensionKind::none ? 0
                                                                    : nblocks;
  for (const Extents* column : columns) {
    if (column->extent(1) >= needed) continue;
    fail_run("cannot write restart file " + recordio::path_of(filename) + ": extents of " +
             std::to_string(column->extent(1)) + " blocks, " + std::to_string(needed) +
             " are to be written");
  }
  if (layout.counted_variables && nfvar.allocated() && nfvar.size() < nblocks) {
    fail_run("cannot write restart file " + recordio::path_of(filename) + ": nfvar holds " +
             std::to_string(nfvar.size()) + " blocks, " + std::to_string(nblocks) +
             " are to be written");
  }
}

void write_lead(const Unit& unit, HeaderKind header, const integer& nblocks, logical dblprec,
                logical multiblock, const Extents& idim, const Extents& jdim, const Extents& kdim) {
  switch (header) {
    case HeaderKind::none:
      return;
    case HeaderKind::talven:
      message("TALVEN Writer not implimented!");
      stop_run();
    case HeaderKind::time_step:
      return unit.write(time_step_record(std::as_const(nstep), std::as_const(dtau), nblocks,
                                         step_kind(unit, dblprec)));
    case HeaderKind::single_block:
      return unit.write(single_block_record(idim(1), jdim(1), kdim(1), std::as_const(nstep),
                                            std::as_const(dtau), step_kind(unit, dblprec)));
    case HeaderKind::plot3d:
      if (multiblock) unit.write({scalar(nblocks)});
      return;
  }
}

void write_extents(const Unit& unit, DimensionKind dimensions, integer nblocks, const Extents& idim,
                   const Extents& jdim, const Extents& kdim) {
  switch (dimensions) {
    case DimensionKind::none:
      return;
    case DimensionKind::record_per_block:
      for (integer b = 1; b <= nblocks; ++b) {
        unit.write(block_extents_record(idim(b), jdim(b), kdim(b)));
      }
      return;
    case DimensionKind::one_record:
      return write_dimension_record(unit, nblocks, {idim, jdim, kdim});
    case DimensionKind::one_record_with_variables:
      if (!nfvar.allocated()) {
        static_cast<void>(allocate_checked(nfvar, std::max(nblocks, 0)));
        std::ranges::fill(nfvar.span(), 0);
        if (nfvar.size() < nblocks) fail_run("out of memory for the variable counts");
      }
      return write_dimension_record(unit, nblocks, {idim, jdim, kdim, std::as_const(nfvar)});
  }
}

}  // namespace

void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, array_view<const integer, 1> idim,
                          array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                          integer rsttype, logical multiblock) {
  const Layout& layout = layout_of(rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  if (unit.known()) check_extents(filename, layout, nblocks, {&idim, &jdim, &kdim});
  unit.open(filename, OpenStatus::unknown);
  if (!unit.known() && layout.header != HeaderKind::talven) return;
  write_lead(unit, layout.header, nblocks, dblprec, multiblock, idim, jdim, kdim);
  write_extents(unit, layout.dimensions, nblocks, idim, jdim, kdim);
}

void writerestartheader(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                        array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                        array_view<const integer, 1> kdim, integer rsttype,
                        logical multiblock) try {
  write_restart_header(filename, iformat, dblprec, nblocks, idim, jdim, kdim, rsttype, multiblock);
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("write restart file", filename);
}

}  // namespace mod_p3dgrid
