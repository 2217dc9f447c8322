#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "grid/dimension_record.hpp"
#include "recordio/unit.hpp"
#include "restart/body.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using p3dgrid::DimensionKind;
using recordio::OpenStatus;
using recordio::Unit;

using Extents = array_view<const integer, 1>;

/// Refuses extents or variable counts of fewer blocks than are to be written, before the file is
/// touched.
void check_extents(const FileName& filename, const LayoutTraits& layout, integer nblocks,
                   std::initializer_list<const Extents*> columns) {
  const integer needed = layout.header == p3dgrid::HeaderKind::single_block ? 1
                         : layout.dimensions == DimensionKind::none         ? 0
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

/// What the header is written from. Layout 0, which alone has more, is not written.
struct HeaderSource {
  const integer& nblocks;
  const integer& i;
  const integer& j;
  const integer& k;
  const integer& nstep = mod_p3dgrid::nstep;
  const double& dtau = mod_p3dgrid::dtau;
  static constexpr integer fileversion = 0, eqid = 0, talnvar = 0, itimeint = 0, ibeta = 0;
  static constexpr integer isgsmodel = 0;
  static constexpr double talre = 0, talxm1 = 0, talalfa = 0, talbeta = 0, talgam = 0, tals1 = 0;
  static constexpr double talpr = 0, talprt = 0;
};

void write_extents(const Unit& unit, DimensionKind dimensions, integer nblocks, const Extents& idim,
                   const Extents& jdim, const Extents& kdim) {
  if (dimensions == DimensionKind::none) return;
  if (dimensions != DimensionKind::one_record_with_variables) {
    return write_dimensions(unit, dimensions, nblocks, {idim, jdim, kdim});
  }
  if (!nfvar.allocated()) {
    static_cast<void>(allocate_checked(nfvar, std::max(nblocks, 0)));
    std::ranges::fill(nfvar.span(), 0);
    if (nfvar.size() < nblocks) fail_run("out of memory for the variable counts");
  }
  write_dimensions(unit, dimensions, nblocks, {idim, jdim, kdim, std::as_const(nfvar)});
}

}  // namespace

void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, array_view<const integer, 1> idim,
                          array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                          integer rsttype, logical multiblock) {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  if (unit.known() && layout.writable)
    check_extents(filename, layout, nblocks, {&idim, &jdim, &kdim});
  unit.open(filename, OpenStatus::unknown);
  if (!layout.writable) {
    message("TALVEN Writer not implimented!");
    stop_run();
  }
  if (!unit.known()) return;
  const integer none = 0;
  const bool single_block = layout.header == p3dgrid::HeaderKind::single_block;
  const HeaderSource header{nblocks, single_block ? idim(1) : none, single_block ? jdim(1) : none,
                            single_block ? kdim(1) : none};
  walk_lead(layout, coding_of(unit, dblprec), static_cast<bool>(multiblock), header,
            [&](const recordio::WriteList& list) {
              unit.write(list);
              return true;
            });
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
