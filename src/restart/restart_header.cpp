#include "restart/restart_header.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Destination of header values: module variables, and the extents of a single block, which are
/// dropped.
struct HeaderTarget {
  integer& nblocks;
  integer i = 0, j = 0, k = 0;
  integer& fileversion = mod_p3dgrid::fileversion;
  integer& eqid = mod_p3dgrid::eqid;
  integer& talnvar = mod_p3dgrid::talnvar;
  integer& itimeint = mod_p3dgrid::itimeint;
  integer& ibeta = mod_p3dgrid::ibeta;
  integer& nstep = mod_p3dgrid::nstep;
  double& dtau = mod_p3dgrid::dtau;
  integer& isgsmodel = mod_p3dgrid::isgsmodel;
  double& talre = mod_p3dgrid::talre;
  double& talxm1 = mod_p3dgrid::talxm1;
  double& talalfa = mod_p3dgrid::talalfa;
  double& talbeta = mod_p3dgrid::talbeta;
  double& talgam = mod_p3dgrid::talgam;
  double& tals1 = mod_p3dgrid::tals1;
  double& talpr = mod_p3dgrid::talpr;
  double& talprt = mod_p3dgrid::talprt;
};

/// Reads the records before the block dimensions. The flow parameters of layout 0 are always
/// doubles; a single-precision file that has them halts the run before `dtau` changes.
void read_lead(const Unit& unit, const LayoutTraits& layout, integer& nblocks, const Coding& coding,
               logical multiblock, ExtentArrays& extents) {
  if (!unit.known()) return;
  // Known quirk: these arrays are replaced unused, but their allocation is reported.
  if (layout.header == p3dgrid::HeaderKind::single_block) {
    allocate_extents(unit, 1, extents.targets());
  }
  const bool talven = layout.header == p3dgrid::HeaderKind::talven;
  const double old_dtau = dtau;
  HeaderTarget header{nblocks};
  bool first = true;
  walk_lead(layout, coding, static_cast<bool>(multiblock), header,
            [&](const recordio::ReadList& list) {
              unit.read(list);
              const bool goes_on =
                  !std::exchange(first, false) && eqid == p3dgrid::equations_with_parameters;
              if (talven && goes_on && holds_singles(coding)) {
                dtau = old_dtau;
                message("Single precision TALVEN reads not working!");
                stop_run();
              }
            });
}

/// Allocates `nfvar` with zeros unless it is allocated. False if there is not enough memory.
bool allocate_variable_counts(integer nblocks) {
  if (nfvar.allocated()) return true;
  const bool usable = allocate_checked(nfvar, nblocks);
  std::ranges::fill(nfvar.span(), 0);
  return usable;
}

/// Throws `FailedRead` if `nfvar` has fewer entries than blocks.
void prepare_variable_counts(const Unit& unit, integer nblocks) {
  unit.require_array(allocate_variable_counts(nblocks),
                     "an unallocated array for the variable counts");
  if (nfvar.size() >= nblocks || !unit.known()) return;
  unit.fail(std::to_string(nblocks) + " blocks",
            "at most " + std::to_string(nfvar.size()) + ", for which nfvar is allocated");
}

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
  check_variable_counts("cannot write restart file ", filename, layout, nblocks);
}

}  // namespace

void read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                         integer& nblocks, integer rsttype, logical multiblock,
                         ExtentArrays& extents) {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  const Unit unit(unit_number::restart_read, iformat);
  const Coding coding = unit.coding(filename, dblprec);
  check_dimensions(filename, layout, coding);
  itimeint = 0;
  nblocks = 1;
  unit.open(filename, OpenStatus::old);
  read_lead(unit, layout, nblocks, coding, multiblock, extents);
  const bool counts = layout.dimensions == DimensionKind::one_record_with_variables;
  const bool one_record = counts || layout.dimensions == DimensionKind::one_record;
  // Blocks without extents have a record in the body.
  require_room_for_dimensions(unit, coding, nblocks,
                              one_record ? recordio::Claim::one_record : recordio::Claim::records);
  extents = {};
  allocate_extents(unit, nblocks, extents.targets());
  if (counts) prepare_variable_counts(unit, nblocks);
  if (!unit.known() || layout.dimensions == DimensionKind::none) return;
  read_dimensions(unit, coding, layout.dimensions, nblocks, extents.targets(),
                  counts ? &nfvar : nullptr);
}

void require_plausible_extents(const Unit& unit, const ExtentArrays& extents) {
  for (integer b = 1; b <= extents.i.size(); ++b) {
    const BlockExtents of_block = extents.of(b);
    if (!points_of_block(of_block)) fail_on_extents(unit, b, of_block);
  }
}

void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock) {
  ExtentArrays dropped;
  readrestartheader(filename, iformat, dblprec, nblocks, rsttype, multiblock, dropped.i, dropped.j,
                    dropped.k);
}

void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock, allocatable<integer, 1>& idim,
                       allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim) try {
  ExtentArrays extents;
  read_restart_header(filename, iformat, dblprec, nblocks, rsttype, multiblock, extents);
  idim = std::move(extents.i);
  jdim = std::move(extents.j);
  kdim = std::move(extents.k);
} catch (...) {
  end_operation("read restart file", filename);
}

void write_restart_header(const FileName& filename, integer iformat, logical dblprec,
                          integer nblocks, const ExtentViews& extents, integer rsttype,
                          logical multiblock) {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  const Unit unit(unit_number::restart_write, iformat);
  const Coding coding = unit.coding(filename, dblprec);
  check_dimensions(filename, layout, coding);
  if (unit.known() && layout.writable) {
    check_extents(filename, layout, nblocks, extents);
    check_planes("cannot write " + restart_file(filename), coding, nblocks, extents);
  }
  unit.open(filename, OpenStatus::unknown);
  if (!layout.writable) {
    message("TALVEN Writer not implimented!");
    stop_run();
  }
  if (!unit.known()) return;
  p3dgrid::HeaderValues header;
  header.nblocks = nblocks;
  header.nstep = nstep;
  header.dtau = dtau;
  if (layout.header == p3dgrid::HeaderKind::single_block) {
    header.i = extents.i(1);
    header.j = extents.j(1);
    header.k = extents.k(1);
  }
  walk_lead(layout, coding, static_cast<bool>(multiblock), std::as_const(header),
            [&](const recordio::WriteList& list) { unit.write(list); });
  const bool counts = layout.dimensions == DimensionKind::one_record_with_variables;
  if (counts && !allocate_variable_counts(nblocks)) {
    fail_run("out of memory for the variable counts");
  }
  if (layout.dimensions == DimensionKind::none) return;
  write_dimensions(unit, coding, layout.dimensions, nblocks, extents, std::as_const(nfvar));
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
