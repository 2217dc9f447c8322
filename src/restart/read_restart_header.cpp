#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "grid/dimension_record.hpp"
#include "recordio/unit.hpp"
#include "restart/body.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/point_numbering.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using p3dgrid::DimensionKind;
using recordio::OpenStatus;
using recordio::Unit;

/// Allocates the extents anew, whatever they held, and sets them to 0.
bool allocate_extents(const Unit& unit, integer nblocks, HeaderExtents& extents) {
  extents = {};
  auto& [ieng, jeng, keng] = extents;
  if (!allocate_group_checked(std::max(nblocks, 0), ieng, jeng, keng)) {
    unit.fail("no memory", "arrays for the extents of " + std::to_string(nblocks) + " blocks");
    return false;
  }
  for (auto* column : {&ieng, &jeng, &keng}) std::ranges::fill(column->span(), 0);
  return true;
}

/// What the header is read into: module variables, and extents that are allocated on the way.
struct HeaderTarget {
  integer& nblocks;
  double dtau;  ///< a refused header does not change the module variable
  integer i = 0;
  integer j = 0;
  integer k = 0;
  integer& fileversion = mod_p3dgrid::fileversion;
  integer& eqid = mod_p3dgrid::eqid;
  integer& talnvar = mod_p3dgrid::talnvar;
  integer& itimeint = mod_p3dgrid::itimeint;
  integer& ibeta = mod_p3dgrid::ibeta;
  integer& nstep = mod_p3dgrid::nstep;
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

/// Reads what stands in front of the block dimensions. The flow parameters of layout 0 are always
/// doubles, and a single-precision file that has them is refused before its step size is stored.
bool read_lead(const Unit& unit, const LayoutTraits& layout, integer& nblocks, logical dblprec,
               logical multiblock, HeaderExtents& extents) {
  if (!unit.known()) return true;
  // The extents of a single block are read into arrays of their own, which those of all layouts
  // replace.
  const bool single_block = layout.header == p3dgrid::HeaderKind::single_block;
  if (single_block && !allocate_extents(unit, 1, extents)) return false;
  const Coding coding = coding_of(unit, dblprec);
  const bool talven = layout.header == p3dgrid::HeaderKind::talven;
  const bool single_records = !is_text(coding) && !holds_doubles(coding);
  HeaderTarget header{nblocks, dtau};
  bool first = true;
  return walk_lead(layout, coding, static_cast<bool>(multiblock), header,
                   [&](const recordio::ReadList& list) {
                     const bool complete = unit.read(list);
                     const bool goes_on = !std::exchange(first, false) && complete && talven &&
                                          eqid == p3dgrid::equations_with_parameters;
                     if (goes_on && single_records) {
                       message("Single precision TALVEN reads not working!");
                       stop_run();
                     }
                     dtau = header.dtau;
                     return complete;
                   });
}

/// Makes `nfvar` hold an entry per block. One that is allocated already is used as it is, but
/// never beyond its end.
bool prepare_variable_counts(const Unit& unit, integer nblocks) {
  if (!nfvar.allocated()) {
    const bool usable = allocate_checked(nfvar, std::max(nblocks, 0));
    std::ranges::fill(nfvar.span(), 0);
    if (!usable) {
      unit.fail("no memory", "an array for the variable counts");
      return false;
    }
  }
  if (nfvar.size() >= nblocks || !unit.known()) return true;
  unit.fail(std::to_string(nblocks) + " blocks",
            "at most " + std::to_string(nfvar.size()) + ", for which nfvar is allocated");
  return false;
}

/// A block without extents of its own has a record in the body.
recordio::Claim claim_of(DimensionKind dimensions) {
  const bool in_one_record = dimensions == DimensionKind::one_record ||
                             dimensions == DimensionKind::one_record_with_variables;
  return in_one_record ? recordio::Claim::one_record : recordio::Claim::records;
}

bool read_extents(const Unit& unit, DimensionKind dimensions, integer nblocks,
                  HeaderExtents& extents) {
  auto& [ieng, jeng, keng] = extents;
  if (dimensions == DimensionKind::none) return true;
  if (dimensions != DimensionKind::one_record_with_variables) {
    return read_dimensions(unit, dimensions, nblocks, {ieng, jeng, keng});
  }
  return prepare_variable_counts(unit, nblocks) &&
         (!unit.known() || read_dimensions(unit, dimensions, nblocks, {ieng, jeng, keng, nfvar}));
}

}  // namespace

bool read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                         integer& nblocks, integer rsttype, logical multiblock,
                         HeaderExtents& extents) {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  const Unit unit(unit_number::restart_read, iformat);
  itimeint = 0;
  nblocks = 1;
  unit.open(filename, OpenStatus::old);
  const bool complete = read_lead(unit, layout, nblocks, dblprec, multiblock, extents) &&
                        can_hold_dimensions(unit, nblocks, claim_of(layout.dimensions)) &&
                        allocate_extents(unit, nblocks, extents) &&
                        read_extents(unit, layout.dimensions, nblocks, extents);
  if (!complete) host::dispfilereaderror();
  return complete;
}

bool can_be_of_blocks(const Unit& unit, const HeaderExtents& extents) {
  const auto& [ieng, jeng, keng] = extents;
  for (integer b = 1; b <= ieng.size(); ++b) {
    if (points_of_block(ieng(b), jeng(b), keng(b))) continue;
    fail_on_extents(unit, b, ieng(b), jeng(b), keng(b));
    return false;
  }
  return true;
}

void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock) try {
  HeaderExtents dropped;
  static_cast<void>(
      read_restart_header(filename, iformat, dblprec, nblocks, rsttype, multiblock, dropped));
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("read restart file", filename);
}

void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock, allocatable<integer, 1>& idim,
                       allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim) try {
  HeaderExtents extents;
  if (!read_restart_header(filename, iformat, dblprec, nblocks, rsttype, multiblock, extents)) {
    return;
  }
  idim = std::move(extents.IENG);
  jdim = std::move(extents.JENG);
  kdim = std::move(extents.KENG);
} catch (const std::bad_alloc&) {
  recordio::fail_without_memory("read restart file", filename);
}

}  // namespace mod_p3dgrid
