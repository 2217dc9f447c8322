#include <algorithm>
#include <string>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "restart/staging.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"

namespace mod_p3dgrid {
namespace {

/// First variable that extensions of layout 101 can hold.
constexpr integer first_extension_variable = p3dgrid::solution_variables + 1;

struct VariableRead : RestartFile {
  integer ivar;
  std::int64_t allpoints;            ///< sum of the caller's points per block
  std::array<std::int64_t, 2> held;  ///< extents of the caller's array
};

/// Reads one variable into the staging array and drops all others.
template <class Real>
struct VariableReader {
  const VariableRead& read;
  Real* staging;

  void begin_block(integer block) const {
    message("Reading flow variable ", read.ivar, " for grid ", block);
  }
  void move(const BodyRecord& record) const {
    if (record.kind == BodyRecordKind::older_level) {
      return skip_older_level(read, record);
    }
    read.unit.read(list_of<void>(*this, record));
  }
  void extend(const Extension&) const {}

  [[nodiscard]] recordio::Values<void> parameters_of(const BodyRecord& record) const {
    return parameter_row<void>(read.coding, record, record.block);
  }
  [[nodiscard]] recordio::Values<void> triplets_of(integer block) const {
    return recordio::dropped(real_kind(read.coding), triplet * read.points.npts(block));
  }
  /// Adjacent variables that are dropped share one entry.
  void add_variables(recordio::ReadList& list, integer block,
                     const p3dgrid::Section& variables) const {
    const std::int64_t points = read.points.npts(block);
    std::int64_t dropped = 0;
    const auto drop = [&] {
      list.push_back(recordio::dropped(real_kind(read.coding), dropped * points));
      dropped = 0;
    };
    // Without points the record may name any variables.
    for (std::int64_t m = variables.first; points > 0 && m <= variables.last; ++m) {
      if (m != read.ivar) {
        ++dropped;
        continue;
      }
      drop();
      list.push_back(recordio::values(staging + read.points.before(block), points));
    }
    drop();
  }
};

void check_variable(const VariableRead& read, std::int64_t variables) {
  if (read.ivar >= 1 && read.ivar <= variables) return;
  refuse_restart(read.filename, "there is no variable " + std::to_string(read.ivar) +
                                    ", numrstrtvar counts " + std::to_string(variables));
}

void check_arguments(const VariableRead& read) {
  check_variable(read, variables_per_point());
  check_points(restart_kind, read.filename, "blockpoints", read.allpoints, read.points);
  // An array without rows holds no points.
  const std::int64_t held = read.held[0] > 0 ? read.held[1] : 0;
  check_points(restart_kind, read.filename, "varvalues", held, read.points);
  if (held < read.allpoints) {
    refuse_restart(read.filename, "varvalues holds " + std::to_string(held) +
                                      " points, blockpoints sum up to " +
                                      std::to_string(read.allpoints));
  }
}

/// Whether the blocks always fill the staging array, so that it need not be cleared.
bool blocks_fill_staging(const VariableRead& read, const std::vector<BodyRecord>& records) {
  if (is_text(read.coding) || read.points.total < read.allpoints) return false;
  return std::ranges::any_of(records, [&](const BodyRecord& record) {
    return record.kind != BodyRecordKind::older_level && record.holds(read.ivar);
  });
}

template <class Real, class Result>
void read_variable(const VariableRead& read, array_view<Result, 2> varvalues) {
  auto& [staging, targets] = one_variable_staging<Real>;
  auto& steps = one_variable_steps;
  // Text has no records of older levels.
  const auto records =
      block_records_with_leading(read, p3dgrid::older_levels(read.coding, itimeint));
  const integer highest = checked_highest_variable(records);
  const std::int64_t variables = variables_per_point();
  if (read.points.total > 0) check_variables(read.filename, highest, variables);
  check_variable(read, variables);  // again, because a host can change `numrstrtvar` in a callback
  bool usable = allocate_staging(staging, 1, read.allpoints);
  // The two tables are not used, but hosts are told of their allocation.
  usable = allocate_staging(targets, variables) && usable;
  usable = allocate_staging(steps, variables) && usable;
  read.unit.require_array(usable && staging.extent(1) == 1, "unallocated staging arrays");
  if (!blocks_fill_staging(read, records)) std::ranges::fill(staging.span(), Real{0});
  create_parameters_to_read(read);
  const VariableReader<Real> reader{read, staging.data()};
  const bool extensions = read.layout.extensions && read.ivar >= first_extension_variable;
  read_records(read.unit, {records, read.nblocks, extensions}, reader);
  copy_rows(staging, varvalues, 1, read.allpoints);
  staging.deallocate();
  targets.deallocate();
  steps.deallocate();
}

template <class Result>
void read_next_variable(integer ivar, const RestartArguments& arguments, integer nblocks,
                        integer_view blockpoints, array_view<Result, 2> varvalues,
                        const ExtentViews& given) try {
  announce_restart(host::announce_read, arguments, ivar);
  VariableRead read{
      {arguments, unit_number::restart_read, nblocks}, ivar, sum(blockpoints), varvalues.extents()};
  if (read.unit.known()) {
    read.points = checked_numbering(restart_file(read.filename), nblocks, given);
    check_arguments(read);
  }
  integer scratch = 1;
  ExtentArrays extents;
  read_restart_header(read, scratch, extents);
  require_plausible_extents(read.unit, extents);
  try {
    if (read.unit.known()) {
      holds_singles(read.coding) ? read_variable<float>(read, varvalues)
                                 : read_variable<double>(read, varvalues);
    }
  } catch (const FailedRead&) {
    throw;
  } catch (...) {
    one_variable_staging<float> = {};
    one_variable_staging<double> = {};
    one_variable_steps.deallocate();
    throw;
  }
  read.unit.close();
} catch (...) {
  end_operation("read restart file", arguments.filename);
}

}  // namespace

void readnextp3dvar(integer ivar, const FileName& filename, integer iformat, logical dblprec,
                    integer nblocks, integer_view blockpoints, array_view<float, 2> varvalues,
                    integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                    logical multiblock) {
  read_next_variable(ivar, {filename, iformat, dblprec, rsttype, multiblock}, nblocks, blockpoints,
                     varvalues, {idim, jdim, kdim});
}

void readnextp3dvar(integer ivar, const FileName& filename, integer iformat, logical dblprec,
                    integer nblocks, integer_view blockpoints, array_argument<double, 2> varvalues,
                    integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                    logical multiblock) {
  read_next_variable<double>(ivar, {filename, iformat, dblprec, rsttype, multiblock}, nblocks,
                             blockpoints, varvalues, {idim, jdim, kdim});
}

}  // namespace mod_p3dgrid
