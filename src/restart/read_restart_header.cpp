#include <algorithm>
#include <new>
#include <string>

#include "grid/dimension_record.hpp"
#include "recordio/unit.hpp"
#include "restart/header_records.hpp"
#include "restart/layout.hpp"
#include "restart/restart_header.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/point_numbering.hpp"
#include "state/run_end.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

using recordio::OpenStatus;
using recordio::scalar;
using recordio::Unit;

/// The equation set whose header goes on with a record of flow parameters.
constexpr integer equations_with_parameters = 1;

/// The two or three records of a TALVEN header. Its flow parameters are always doubles, and a
/// single-precision file that has them is refused.
bool read_talven(const Unit& unit, integer& nblocks, logical dblprec) {
  if (!unit.read({scalar(fileversion), scalar(eqid)})) return false;
  double step_size = dtau;
  if (!unit.read({scalar(nblocks), scalar(talnvar), scalar(itimeint), scalar(ibeta), scalar(nstep),
                  recordio::real_scalar(step_size, step_kind(unit, dblprec))})) {
    return false;
  }
  const bool with_parameters = eqid == equations_with_parameters;
  if (with_parameters && unit.stores_kinds() && !dblprec) {
    message("Single precision TALVEN reads not working!");
    stop_run();
  }
  dtau = step_size;
  if (!with_parameters) return true;
  return unit.read({scalar(isgsmodel), scalar(talre), scalar(talxm1), scalar(talalfa),
                    scalar(talbeta), scalar(talgam), scalar(tals1), scalar(talpr), scalar(talprt)});
}

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

/// The one record of a single-block header. The extents in it are read, and dropped when those of
/// all layouts are allocated after it.
bool read_single_block(const Unit& unit, logical dblprec, HeaderExtents& extents) {
  if (!allocate_extents(unit, 1, extents)) return false;
  return unit.read(single_block_record(extents.IENG(1), extents.JENG(1), extents.KENG(1), nstep,
                                       dtau, step_kind(unit, dblprec)));
}

bool read_lead(const Unit& unit, HeaderKind header, integer& nblocks, logical dblprec,
               logical multiblock, HeaderExtents& extents) {
  if (!unit.known()) return true;
  switch (header) {
    case HeaderKind::none:
      return true;
    case HeaderKind::talven:
      return read_talven(unit, nblocks, dblprec);
    case HeaderKind::time_step:
      return unit.read(time_step_record(nstep, dtau, nblocks, step_kind(unit, dblprec)));
    case HeaderKind::single_block:
      return read_single_block(unit, dblprec, extents);
    case HeaderKind::plot3d:
      return !multiblock || unit.read({scalar(nblocks)});
  }
  return true;
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
  switch (dimensions) {
    case DimensionKind::none:
      return true;
    case DimensionKind::record_per_block:
      for (integer b = 1; b <= nblocks; ++b) {
        if (!unit.read(block_extents_record(ieng(b), jeng(b), keng(b)))) return false;
      }
      return true;
    case DimensionKind::one_record:
      return read_dimension_record(unit, nblocks, {ieng, jeng, keng});
    case DimensionKind::one_record_with_variables:
      return prepare_variable_counts(unit, nblocks) &&
             (!unit.known() || read_dimension_record(unit, nblocks, {ieng, jeng, keng, nfvar}));
  }
  return true;
}

}  // namespace

bool read_restart_header(const FileName& filename, integer iformat, logical dblprec,
                         integer& nblocks, integer rsttype, logical multiblock,
                         HeaderExtents& extents) {
  const Layout& layout = layout_of(rsttype);
  const Unit unit(unit_number::restart_read, iformat);
  itimeint = 0;
  nblocks = 1;
  unit.open(filename, OpenStatus::old);
  const bool complete = read_lead(unit, layout.header, nblocks, dblprec, multiblock, extents) &&
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
