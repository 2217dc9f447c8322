#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_arguments.hpp"
#include "restart/restart_header.hpp"
#include "restart/staging.hpp"
#include "state/allocation.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/precision.hpp"
#include "state/unit_numbers.hpp"

namespace mod_p3dgrid {
namespace {

allocatable<double, 2>& enlarged(const allocatable<double, 2>&) {
  return restart_staging().DWTMP;
}
allocatable<float, 2>& enlarged(const allocatable<float, 2>&) {
  return restart_staging().WTMP;
}

/// Copies the rows that both arrays have, point by point, for `points` points.
template <class To, class From>
void copy_rows(const allocatable<From, 2>& from, allocatable<To, 2>& to, std::int64_t rows,
               std::int64_t points) {
  convert_rows(from.data(), from.extent(1), to.data(), to.extent(1),
               std::min({rows, from.extent(1), to.extent(1)}), points);
}

/// Reads a whole body into arrays of kind `Real`.
template <class Real>
class WholeReader : public ReadingVisitor {
 public:
  WholeReader(const Unit& unit, const LayoutTraits& layout, WholeArrays<Real> arrays,
              allocatable<Real, 2>& flow)
      : ReadingVisitor(unit), layout_(layout), arrays_(arrays), flow_(flow) {}

  void begin_block(integer block) const {
    if (debugprint) message("Reading flow variables for grid ", block);
    if (layout_.counted_variables) mod_gridvars::numrstrtvar(1) = variables_of_block(block);
    // What text leaves out, and rows that no record fills, hold 0. Block by block: of an array that
    // is far larger than the text only the beginning is touched.
    if (is_text(arrays_.coding)) {
      clear(arrays_.flow, block);
      if (layout_.triplets) clear(arrays_.triplets, block);
    }
  }

  void move(const BodyRecord& record) const {
    if (record.kind == BodyRecordKind::older_level) return skip_older_level(record);
    unit_.read(list_of<void>(arrays_, record));
    if (record.kind == BodyRecordKind::parameters) copy_parameters(record.block);
  }

  void extend(const Extension& extension) {
    if (flow_.extent(1) < extension.variables.last) enlarge(extension);
    mod_gridvars::numrstrtvar(2) = extension.numrstrtvar;
  }

 private:
  /// Text is asked for the record without being text, and that is a failed read.
  void skip_older_level(const BodyRecord& record) const {
    if (is_text(arrays_.coding)) {
      unit_.fail("a text file", "an unformatted record of an older time level");
    }
    mod_p3dgrid::skip_older_level(unit_, arrays_.coding, arrays_.points.npts(record.block), record);
  }

  void clear(array_view<Real, 2> array, integer block) const {
    const std::int64_t rows = array.extent(1);
    std::fill_n(array.data() + arrays_.points.before(block) * rows,
                arrays_.points.npts(block) * rows, Real{0});
  }

  void enlarge(const Extension& extension) {
    const std::int64_t points = arrays_.points.total;
    allocatable<Real, 2>& larger = enlarged(flow_);
    unit_.require_array(allocate_staging(larger, extension.variables.last, points),
                        "a larger array for the flow variables");
    // Rows that no record fills, because a chain skips them or leaves values out, hold 0.
    std::ranges::fill(larger.span(), Real{0});
    copy_rows(flow_, larger, extension.kept, points);
    flow_ = std::move(larger);
    arrays_.flow = flow_;
  }

  /// Makes the module's copies those of the block just read. They follow files of records only;
  /// text leaves them as they were.
  void copy_parameters(integer block) const {
    const auto copy = [block](const auto& parameters) {
      p3dxm1 = static_cast<double>(parameters(block, 1));
      p3dalfa = static_cast<double>(parameters(block, 2));
      p3dre = static_cast<double>(parameters(block, 3));
      p3dtau = static_cast<double>(parameters(block, 4));
    };
    if (is_text(arrays_.coding)) return;
    return holds_doubles(arrays_.coding) ? copy(dqvar) : copy(sqvar);
  }

  const LayoutTraits& layout_;
  WholeArrays<Real> arrays_;
  allocatable<Real, 2>& flow_;
};

/// The arguments and the header's findings that a body is read with.
struct RestartRead {
  const FileName& filename;
  const Unit& unit;
  const LayoutTraits& layout;
  Coding coding;
  integer ngrid;
  PointNumbering points;
  allocatable<float, 2>& varvalues;
  allocatable<float, 2>& auxvalues;

  [[nodiscard]] std::vector<BodyRecord> records() const {
    const bool leading = reads_triplets(layout, coding);
    return block_records(layout, leading ? std::optional(leading_variables) : std::nullopt,
                         p3dgrid::older_levels(itimeint));
  }

  /// Requires that the file can hold the flow that its header announces or the section table asks
  /// for; called before memory is taken for it.
  void require_room_for_flow() const {
    std::int64_t per_point = 0;
    for (const BodyRecord& record : records()) per_point += record.variables.variables();
    // The largest count sizes the flow of all blocks.
    std::int64_t counted = 0;
    for (integer b = 1; layout.counted_variables && b <= ngrid; ++b) {
      const integer variables = variables_of_block(b);
      if (variables < 0) {
        unit.fail(std::to_string(variables) + " variables in block " + std::to_string(b),
                  "a count from 0 on");
      }
      counted = std::max<std::int64_t>(counted, variables);
    }
    unit.require_room(values_of(points.total, std::max(counted, per_point)), real_kind(coding),
                      recordio::Claim::may_be_truncated,
                      "the flow variables of " + std::to_string(points.total) + " points");
  }

  /// Allocates what layouts 100 and 101 need besides the flow array.
  void prepare_triplets() const {
    if (!layout.triplets) return;
    mod_gridvars::numrstrtvar(1) = leading_variables;
    iflag.fill(0);
    integer status = auxvalues.allocate(triplet, points.total);
    bool usable = true;
    auto& DX = restart_staging().DX;
    const bool doubles = holds_doubles(coding);
    if (doubles && status == allocation_done) status = DX.allocate(triplet, points.total);
    host::checkallocationerror(status);
    if (doubles) {
      if (!covers(DX, triplet, points.total)) DX.deallocate();
      usable = DX.allocated() || DX.allocate(triplet, points.total) == allocation_done;
    }
    unit.require_array(usable && covers(auxvalues, triplet, points.total),
                       "an unallocated array for triplets");
  }

  /// Reads the body into arrays that the caller has allocated.
  template <class Real>
  void read_into(allocatable<Real, 2>& flow, allocatable<Real, 2>& triplets,
                 const StagingArrays& staging = {}) {
    prepare_triplets();
    WholeReader<Real> reader(unit, layout, {coding, points, flow, triplets, ngrid, staging}, flow);
    walk_body({records(), ngrid, layout.extensions}, reader);
  }

  /// Looks at table and file before memory is taken, so that a mistake leaves none behind.
  void read() {
    const std::int64_t variables = variables_per_point();
    const integer highest = checked_highest_variable(records());
    if (points.total > 0) check_variables(filename, highest, variables);
    require_room_for_flow();
    if (holds_doubles(coding)) {
      unit.require_array(allocate_staging(restart_staging().DW, variables, points.total),
                         "a staging array for the flow variables");
      read_staged();
    } else {
      require_flow(allocate_checked(varvalues, variables, points.total));
      read_into(varvalues, auxvalues);
    }
  }

  void require_flow(bool usable) const {
    unit.require_array(usable, "an unallocated array for the flow variables");
  }

  /// Reads through the staging arrays. Values are rounded while they are in the cache; the result
  /// is to be allocated at the end, so until then its memory belongs to an array of this read. Flow
  /// that may be enlarged is rounded as a whole at the end. If there is no memory for the result,
  /// the body is read all the same: the host is told when the result's turn comes.
  void read_staged() {
    auto& DW = restart_staging().DW;
    auto& DX = restart_staging().DX;
    allocatable<float, 2> rounded;
    const integer status =
        layout.triplets ? allocation_done : rounded.allocate(variables_per_point(), points.total);
    const bool at_once = rounded.allocated();
    if (at_once) {
      read_into(rounded, auxvalues, {DW, {}});
    } else {
      read_into(DW, DX);
    }
    if (layout.extensions) {
      // The triplets' array exists since before the blocks were read, and the host is told so. For
      // layout 100 this step is missing: its triplets stay unset and `DX` stays allocated.
      host::checkallocationerror(auxvalues.allocate(triplet, points.total));
      unit.require_array(covers(auxvalues, triplet, points.total), "an array for the triplets");
      copy_rows(DX, auxvalues, triplet, points.total);
      DX.deallocate();
    }
    // The last block's count may not be the largest; all that was read is handed over.
    if (layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
    if (status != allocation_done && !varvalues.allocated()) {
      varvalues = std::move(rounded);  // its extents are known all the same
      host::checkallocationerror(status);
      require_flow(false);
    }
    if (at_once) {
      hand_over(rounded);
    } else {
      hand_over(DW);
    }
    DW.deallocate();
  }

  /// Allocates the result for a copy of what was read, or with the memory of that if it has the
  /// kind and the shape.
  template <class Real>
  void hand_over(allocatable<Real, 2>& flow) {
    const std::int64_t variables = variables_per_point();
    if constexpr (std::is_same_v<Real, float>) {
      if (!varvalues.allocated() && flow.extent(1) == variables) {
        varvalues = std::move(flow);
        return host::checkallocationerror(allocation_done);
      }
    }
    require_flow(allocate_checked(varvalues, variables, points.total));
    copy_rows(flow, varvalues, variables, points.total);
  }
};

/// The parameters of layout 2, one row of zeros per block.
template <class Parameters>
void allocate_parameters(const RestartRead& read, Parameters& parameters) {
  const bool usable = allocate_checked(parameters, read.ngrid, read.layout.parameters);
  std::ranges::fill(parameters.span(), 0);
  read.unit.require_array(usable, "an unallocated array for the flow parameters");
}

void prepare_parameters(const RestartRead& read, integer iformat, logical dblprec) {
  if (read.layout.parameters == 0) return;
  mod_gridvars::numrstrtvar(1) = p3dgrid::solution_variables;
  if (!dblprec && iformat != static_cast<integer>(Encoding::formatted)) {
    allocate_parameters(read, sqvar);
  } else {
    allocate_parameters(read, dqvar);
  }
}

/// With `readallvars` false the flow array is sized for one variable and left unset.
void size_for_one_variable(array_view<const integer, 1> blockpoints,
                           allocatable<float, 2>& varvalues) {
  host::checkallocationerror(varvalues.allocate(1, sum(blockpoints)));
}

void read_whole_body(RestartRead& read, integer nblocks, const ExtentViews& extents) {
  if (read.unit.known()) {
    if (read.ngrid > nblocks) {
      read.unit.fail("a header of " + std::to_string(read.ngrid) + " blocks",
                     "at most " + std::to_string(nblocks));
    }
    read.points = checked_numbering(restart_file(read.filename), read.ngrid, extents);
  }
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (read.unit.known()) read.read();
}

/// Releases what a read that ends in an exception has staged.
void release_staging(const LayoutTraits& layout) {
  RestartStaging& staging = restart_staging();
  staging.DW.deallocate();
  staging.DWTMP.deallocate();
  staging.WTMP.deallocate();
  if (layout.triplets) staging.DX.deallocate();
}

void read_restart(RestartRead& read, integer iformat, logical dblprec, integer nblocks,
                  array_view<const integer, 1> blockpoints, const ExtentViews& extents) {
  prepare_parameters(read, iformat, dblprec);
  if (!mod_gridvars::readallvars) {
    size_for_one_variable(blockpoints, read.varvalues);
    return read.unit.close();
  }
  message("Number of grids is ", read.ngrid);
  read_whole_body(read, nblocks, extents);
  read.unit.close();
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
}

}  // namespace

RestartStaging& restart_staging() {
  static RestartStaging staging;
  return staging;
}

void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    array_view<const integer, 1> blockpoints, allocatable<float, 2>& varvalues,
                    allocatable<float, 2>& auxvalues, array_view<const integer, 1> idim,
                    array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                    integer rsttype, logical multiblock) try {
  const LayoutTraits& layout = p3dgrid::traits_of(rsttype);
  announce_restart(host::announce_read, filename, iformat, dblprec, layout, multiblock);
  check_layout(filename, layout, rsttype);
  const Unit unit(unit_number::restart_read, iformat);
  integer ngrid = 1;
  ExtentArrays extents;
  read_restart_header(filename, iformat, dblprec, ngrid, rsttype, multiblock, extents);
  require_plausible_extents(unit, extents);
  RestartRead read{filename, unit, layout,    coding_of(unit, dblprec),
                   ngrid,    {},   varvalues, auxvalues};
  try {
    read_restart(read, iformat, dblprec, nblocks, blockpoints, {idim, jdim, kdim});
  } catch (const FailedRead&) {
    throw;
  } catch (...) {
    release_staging(layout);
    throw;
  }
} catch (...) {
  end_operation("read restart file", filename);
}

}  // namespace mod_p3dgrid
