#include <algorithm>
#include <string>
#include <utility>

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
void read_lead(const RestartFile& file, integer& nblocks, ExtentArrays& extents) {
  if (!file.unit.known()) return;
  // Known quirk: these arrays are replaced unused, but their allocation is reported.
  if (file.layout.header == p3dgrid::HeaderKind::single_block) {
    allocate_extents(file.unit, 1, extents.targets());
  }
  const bool talven = file.layout.header == p3dgrid::HeaderKind::talven;
  const double old_dtau = dtau;
  HeaderTarget header{nblocks};
  bool first = true;
  walk_lead(file.layout, file.coding, static_cast<bool>(file.multiblock), header,
            [&](const recordio::ReadList& list) {
              file.unit.read(list);
              const bool goes_on =
                  !std::exchange(first, false) && eqid == p3dgrid::equations_with_parameters;
              if (talven && goes_on && holds_singles(file.coding)) {
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

/// Refuses files of two dimensions in layouts that have none.
void check_dimensions(const RestartFile& file) {
  if (has_files_of(file.layout, file.coding)) return;
  refuse_restart(file.filename, "layouts other than 2 and 3 have no files of two dimensions");
}

/// Refuses extents or variable counts of fewer blocks than are written.
void check_extents(const RestartFile& file, const ExtentViews& extents) {
  const integer needed = file.layout.header == p3dgrid::HeaderKind::single_block ? 1
                         : file.layout.dimensions == DimensionKind::none         ? 0
                                                                                 : file.nblocks;
  for (const auto& array : {extents.i, extents.j, extents.k}) {
    if (array.extent(1) >= needed) continue;
    fail_run("cannot write " + restart_file(file.filename) + ": extents of " +
             std::to_string(array.extent(1)) + " blocks, " + std::to_string(needed) +
             " are to be written");
  }
  check_variable_counts("cannot write restart file ", file);
}

}  // namespace

void read_restart_header(const RestartFile& file, integer& nblocks, ExtentArrays& extents) {
  const Unit& unit = file.unit;
  const DimensionKind dimensions = file.layout.dimensions;
  check_dimensions(file);
  itimeint = 0;
  nblocks = 1;
  unit.open(file.filename, OpenStatus::old);
  read_lead(file, nblocks, extents);
  const bool counts = dimensions == DimensionKind::one_record_with_variables;
  const bool one_record = counts || dimensions == DimensionKind::one_record;
  // Blocks without extents have a record in the body.
  require_room_for_dimensions(unit, file.coding, nblocks,
                              one_record ? recordio::Claim::one_record : recordio::Claim::records);
  extents = {};
  allocate_extents(unit, nblocks, extents.targets());
  if (counts) prepare_variable_counts(unit, nblocks);
  if (!unit.known() || dimensions == DimensionKind::none) return;
  read_dimensions(unit, file.coding, dimensions, nblocks, extents.targets(),
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
  read_restart_header(
      {{filename, iformat, dblprec, rsttype, multiblock}, unit_number::restart_read}, nblocks,
      extents);
  idim = std::move(extents.i);
  jdim = std::move(extents.j);
  kdim = std::move(extents.k);
} catch (...) {
  end_operation("read restart file", filename);
}

void write_restart_header(const RestartFile& file, const ExtentViews& extents) {
  const LayoutTraits& layout = file.layout;
  const integer nblocks = file.nblocks;
  check_dimensions(file);
  if (file.unit.known() && layout.writable) {
    check_extents(file, extents);
    check_planes("cannot write " + restart_file(file.filename), file.coding, nblocks, extents);
  }
  file.unit.open(file.filename, OpenStatus::unknown);
  if (!layout.writable) {
    message("TALVEN Writer not implimented!");
    stop_run();
  }
  if (!file.unit.known()) return;
  p3dgrid::HeaderValues header;
  header.nblocks = nblocks;
  header.nstep = nstep;
  header.dtau = dtau;
  if (layout.header == p3dgrid::HeaderKind::single_block) {
    header.i = extents.i(1);
    header.j = extents.j(1);
    header.k = extents.k(1);
  }
  walk_lead(layout, file.coding, static_cast<bool>(file.multiblock), std::as_const(header),
            [&](const recordio::WriteList& list) { file.unit.write(list); });
  const bool counts = layout.dimensions == DimensionKind::one_record_with_variables;
  if (counts && !allocate_variable_counts(nblocks)) {
    fail_run("out of memory for the variable counts");
  }
  if (layout.dimensions == DimensionKind::none) return;
  write_dimensions(file.unit, file.coding, layout.dimensions, nblocks, extents,
                   std::as_const(nfvar));
}

void writerestartheader(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock) try {
  write_restart_header(
      {{filename, iformat, dblprec, rsttype, multiblock}, unit_number::restart_write, nblocks},
      {idim, jdim, kdim});
} catch (...) {
  end_operation("write restart file", filename);
}

}  // namespace mod_p3dgrid
