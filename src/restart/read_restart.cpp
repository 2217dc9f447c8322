#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "restart/staging.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"

namespace mod_p3dgrid {
namespace {

template <class Real>
struct WholeReader {
  const RestartFile& file;
  allocatable<Real, 2>& flow;
  WholeArrays<Real> arrays;

  void begin_block(integer block) const {
    if (debugprint) message("Reading flow variables for grid ", block);
    if (file.layout.counted_variables) mod_gridvars::numrstrtvar(1) = variables_of_block(block);
    // Values that text leaves out, and rows that no record fills, are 0. Cleared block by block,
    // because the array may be far larger than the text.
    if (is_text(file.coding)) {
      clear(arrays.flow, block);
      if (file.layout.triplets) clear(arrays.triplets, block);
    }
  }

  void move(const BodyRecord& record) const {
    if (record.kind == BodyRecordKind::older_level) {
      return skip_older_level(file, record);
    }
    if (record.leaves_out()) clear_variable(record.absent, record.block);
    file.unit.read(list_of<void>(arrays, record));
    if (record.kind == BodyRecordKind::parameters) copy_parameters(record.block);
  }

  void extend(const Extension& extension) {
    if (flow.extent(1) < extension.variables.last) enlarge(extension);
    mod_gridvars::numrstrtvar(2) = extension.numrstrtvar;
  }

 private:
  void clear(array_view<Real, 2> array, integer block) const {
    const std::int64_t rows = array.extent(1);
    std::fill_n(array.data() + file.points.before(block) * rows, file.points.npts(block) * rows,
                Real{0});
  }

  void clear_variable(integer variable, integer block) const {
    const std::int64_t rows = arrays.flow.extent(1);
    check_unchanged({variable, variable}, rows);
    Real* const first = arrays.flow.data() + file.points.before(block) * rows + (variable - 1);
    for (std::int64_t p = 0; p < file.points.npts(block); ++p) first[p * rows] = Real{0};
  }

  void enlarge(const Extension& extension) {
    const std::int64_t points = file.points.total;
    allocatable<Real, 2>& larger = restart_staging<Real>.enlarged;
    file.unit.require_array(allocate_staging(larger, extension.variables.last, points),
                            "a larger array for the flow variables");
    // Rows that no record fills are 0.
    std::ranges::fill(larger.span(), Real{0});
    copy_rows(flow, larger, extension.kept, points);
    flow = std::move(larger);
    file.unit.require_array(flow.allocated(), "a larger array for the flow variables");
    arrays.flow = flow;
  }

  /// Copies the parameters of the block to the module variables, except from text.
  void copy_parameters(integer block) const {
    const auto copy = [block](const auto& parameters) {
      p3dxm1 = static_cast<double>(parameters(block, 1));
      p3dalfa = static_cast<double>(parameters(block, 2));
      p3dre = static_cast<double>(parameters(block, 3));
      p3dtau = static_cast<double>(parameters(block, 4));
    };
    if (is_text(file.coding)) return;
    return holds_doubles(file.coding) ? copy(dqvar) : copy(sqvar);
  }
};

/// The number of blocks is that of the header.
template <class Result>
struct RestartRead : RestartFile {
  allocatable<Result, 2>& varvalues;
  allocatable<Result, 2>& auxvalues;

  using Staged = p3dgrid::OtherReal<Result>;

  [[nodiscard]] std::vector<BodyRecord> records() const {
    const bool leading = reads_triplets(layout, coding);
    return block_records(*this, leading ? std::optional(p3dgrid::solution_variables) : std::nullopt,
                         p3dgrid::older_levels(itimeint));
  }

  /// Throws `FailedRead` if the file cannot hold the flow that the header announces or the section
  /// table asks for. Called before memory is allocated for it.
  void require_room_for_flow() const {
    std::int64_t per_point = 0;
    for (const BodyRecord& record : records()) per_point += record.variables_held();
    // The largest count determines the array.
    std::int64_t counted = 0;
    for (integer b = 1; layout.counted_variables && b <= nblocks; ++b) {
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

  void prepare_triplets() const {
    if (!layout.triplets) return;
    mod_gridvars::numrstrtvar(1) = p3dgrid::solution_variables;
    iflag.fill(0);
    integer status = auxvalues.allocate(triplet, points.total);
    bool usable = true;
    auto& staging = restart_staging<Staged>.triplets;
    const bool staged = p3dgrid::needs_staging<Result>(coding);
    if (staged && status == allocation_done) status = staging.allocate(triplet, points.total);
    host::checkallocationerror(status);
    if (staged) {
      if (!covers(staging, triplet, points.total)) staging.deallocate();
      usable = staging.allocated() || staging.allocate(triplet, points.total) == allocation_done;
    }
    unit.require_array(usable && covers(auxvalues, triplet, points.total),
                       "an unallocated array for triplets");
  }

  template <class Real>
  void read_into(allocatable<Real, 2>& flow, allocatable<Real, 2>& triplets,
                 array_view<p3dgrid::OtherReal<Real>, 2> flow_staging = {}) {
    prepare_triplets();
    WholeReader<Real> reader{*this, flow, {*this, flow, triplets, nblocks, flow_staging}};
    read_records(unit, {records(), nblocks, layout.extensions}, reader);
  }

  /// Checks the table and the file before memory is allocated.
  void read() {
    const std::int64_t variables = variables_per_point();
    const integer highest = checked_highest_variable(records());
    if (points.total > 0) check_variables(filename, highest, variables);
    require_room_for_flow();
    if (p3dgrid::needs_staging<Result>(coding)) {
      unit.require_array(allocate_staging(restart_staging<Staged>.flow, variables, points.total),
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

  /// Reads through the staging arrays. Values are converted piece by piece into `converted`,
  /// because hosts expect that the result is allocated after the read. Flow that may be enlarged is
  /// converted at the end. If there is no memory for the result, the body is still read, and the
  /// failure is reported afterwards.
  void read_staged() {
    auto& [flow, triplets, enlarged] = restart_staging<Staged>;
    allocatable<Result, 2> converted = varvalues.sibling();
    const integer status =
        layout.triplets ? allocation_done : converted.allocate(variables_per_point(), points.total);
    const bool at_once = converted.allocated();
    if (at_once) {
      read_into(converted, auxvalues, flow);
    } else {
      read_into(flow, triplets);
    }
    if (layout.extensions) {
      // The second allocation of `auxvalues` is a known quirk, as is that it is missing for layout
      // 100, whose triplets stay unset and whose staging array stays allocated.
      host::checkallocationerror(auxvalues.allocate(triplet, points.total));
      unit.require_array(covers(auxvalues, triplet, points.total), "an array for the triplets");
      copy_rows(triplets, auxvalues, triplet, points.total);
      triplets.deallocate();
    }
    // The visitor has left the count of the last block.
    if (layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
    if (status != allocation_done && !varvalues.allocated()) {
      varvalues = std::move(converted);  // without storage, but with extents
      host::checkallocationerror(status);
      require_flow(false);
    }
    if (at_once) {
      hand_over(converted);
    } else {
      hand_over(flow);
    }
    flow.deallocate();
  }

  /// Moves `flow` to the result if type and shape agree, else copies it.
  template <class Real>
  void hand_over(allocatable<Real, 2>& flow) {
    const std::int64_t variables = variables_per_point();
    if constexpr (std::is_same_v<Real, Result>) {
      if (!varvalues.allocated() && flow.extent(1) == variables) {
        varvalues = std::move(flow);
        return host::checkallocationerror(allocation_done);
      }
    }
    require_flow(allocate_checked(varvalues, variables, points.total));
    copy_rows(flow, varvalues, variables, points.total);
  }
};

void prepare_parameters(const RestartFile& read) {
  if (read.layout.parameters == 0) return;
  mod_gridvars::numrstrtvar(1) = p3dgrid::solution_variables;
  const auto allocate = [&](auto& parameters) {
    const bool usable = allocate_checked(parameters, read.nblocks, read.layout.parameters);
    std::ranges::fill(parameters.span(), 0);
    read.unit.require_array(usable, "an unallocated array for the flow parameters");
  };
  const bool single = !read.dblprec && read.iformat != static_cast<integer>(Encoding::formatted);
  single ? allocate(sqvar) : allocate(dqvar);
}

template <class Result>
void read_body(RestartRead<Result>& read, integer nblocks, integer_view blockpoints,
               const ExtentViews& extents) {
  prepare_parameters(read);
  if (!mod_gridvars::readallvars) {
    host::checkallocationerror(read.varvalues.allocate(1, sum(blockpoints)));
    return read.unit.close();
  }
  message("Number of grids is ", read.nblocks);
  if (read.unit.known()) {
    if (read.nblocks > nblocks) {
      read.unit.fail("a header of " + std::to_string(read.nblocks) + " blocks",
                     "at most " + std::to_string(nblocks));
    }
    read.points = checked_numbering(restart_file(read.filename), read.nblocks, extents);
  }
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
  if (read.unit.known()) read.read();
  read.unit.close();
  if (read.layout.counted_variables) mod_gridvars::numrstrtvar(1) = most_variables();
}

/// Releases the staging arrays, except the triplets of another layout.
void release_staging(const LayoutTraits& layout) {
  const auto release = [&](auto& staging) {
    staging.flow.deallocate();
    staging.enlarged.deallocate();
    if (layout.triplets) staging.triplets.deallocate();
  };
  release(restart_staging<float>);
  release(restart_staging<double>);
}

template <class Result>
void read_restart(const RestartArguments& arguments, integer nblocks, integer_view blockpoints,
                  allocatable<Result, 2>& varvalues, allocatable<Result, 2>& auxvalues,
                  const ExtentViews& given) try {
  announce_restart(host::announce_read, arguments);
  RestartRead<Result> read{{arguments, unit_number::restart_read}, varvalues, auxvalues};
  ExtentArrays extents;
  read_restart_header(read, read.nblocks, extents);
  require_plausible_extents(read.unit, extents);
  try {
    read_body(read, nblocks, blockpoints, given);
  } catch (const FailedRead&) {
    throw;
  } catch (...) {
    release_staging(read.layout);
    throw;
  }
} catch (...) {
  end_operation("read restart file", arguments.filename);
}

}  // namespace

void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    integer_view blockpoints, allocatable<float, 2>& varvalues,
                    allocatable<float, 2>& auxvalues, integer_view idim, integer_view jdim,
                    integer_view kdim, integer rsttype, logical multiblock) {
  read_restart({filename, iformat, dblprec, rsttype, multiblock}, nblocks, blockpoints, varvalues,
               auxvalues, {idim, jdim, kdim});
}

void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    integer_view blockpoints, allocatable<double, 2>& varvalues,
                    allocatable<double, 2>& auxvalues, integer_view idim, integer_view jdim,
                    integer_view kdim, integer rsttype, logical multiblock) {
  read_restart({filename, iformat, dblprec, rsttype, multiblock}, nblocks, blockpoints, varvalues,
               auxvalues, {idim, jdim, kdim});
}

}  // namespace mod_p3dgrid
