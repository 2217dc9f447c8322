#include <algorithm>
#include <string>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"
#include "restart/restart_file.hpp"
#include "restart/staging.hpp"
#include "state/host.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

template <class Lead>
struct Combination : RestartFile {
  array_view<const Lead, 2> leadvalues;
  integer nparamrows;
  std::int64_t variables;
};

Unit unit_of(integer variable) {
  return {unit_number::temporary(variable), temporary_file_format};
}

void open_variable_file(integer variable) {
  unit_of(variable).open(tmpfile(variable), OpenStatus::old);
}

/// Deletes the temporary files. Returns the first reason why one could not be deleted; empty for
/// success.
std::string delete_variable_files(std::int64_t variables) {
  std::string first_reason;
  for (integer m = 1; m <= variables; ++m) {
    const std::string reason = unit_of(m).close_and_delete();
    if (first_reason.empty()) first_reason = reason;
  }
  return first_reason;
}

/// Writes a body from the variable files, block by block.
/// @tparam Real  of the temporary files
/// @tparam Lead  of the caller's triplets
template <class Real, class Lead>
struct Combiner {
  const Combination<Lead>& combination;
  const std::vector<BodyRecord>& records;
  allocatable<Real, 2> slots;                   ///< (point of the block, variable)
  fixed_array<integer, 15> block_in_slot = {};  ///< 0 for a variable that has not been read

  void begin_block(integer block) {
    const integer first_section = mod_gridvars::numrstrtvar(1);
    read_variables(block, {1, first_section});
    // Further sections may name variables beyond those of the first.
    for (const BodyRecord& record : records) {
      if (record.kind == BodyRecordKind::section) read_variables(block, record.variables);
    }
    message("Writing flow variables for grid ", block);
  }

  void move(const BodyRecord& record) {
    if (record.kind == BodyRecordKind::extension) read_variables(record.block, record.variables);
    combination.unit.write(list_of<const void>(*this, record));
  }

  /// Reopens the files of variables that have been read, to read them from the start.
  void extend(const Extension& extension) {
    for (integer m = extension.variables.first; m <= extension.variables.last; ++m) {
      if (block_in_slot(m) != 0) open_variable_file(m);
      block_in_slot(m) = 0;
    }
  }

  /// Throws `FailedRead` if a file has more records than have been read.
  void expect_ends() const {
    for (integer m = 1; m <= combination.variables; ++m) {
      if (block_in_slot(m) != 0) unit_of(m).expect_end();
    }
  }

  [[nodiscard]] recordio::Values<const void> parameters_of(const BodyRecord& record) const {
    return parameter_row<const void>(combination.coding, record,
                                     std::min(record.block, combination.nparamrows));
  }
  [[nodiscard]] recordio::Values<const void> triplets_of(integer block) const {
    return stored_as(output_kind(), variable_lines(combination.leadvalues, combination.points,
                                                   block, {1, triplet}));
  }
  void add_variables(recordio::WriteList& list, integer block,
                     const p3dgrid::Section& variables) const {
    if (variables.variables() > 0) check_unchanged(variables, combination.variables);
    for (integer m = variables.first; m <= variables.last; ++m) {
      list.push_back(stored_as(
          output_kind(), recordio::values(slot_of(slots, m), combination.points.npts(block))));
    }
  }

 private:
  /// The temporary files of text are in double precision. For a caller of single precision they
  /// hold singles, which text shows with their own digits.
  [[nodiscard]] recordio::FileKind output_kind() const {
    return is_text(combination.coding) ? recordio::kind_of<Lead>() : real_kind(combination.coding);
  }

  template <class Slots>
  static auto* slot_of(Slots& slots, integer variable) {
    return slots.data() + (variable - 1) * slots.extent(1);
  }

  /// Reads the block of each variable into its slot, unless it is there.
  void read_variables(integer block, const p3dgrid::Section& variables) {
    if (variables.variables() > 0) check_unchanged(variables, combination.variables);
    for (integer m = variables.first; m <= variables.last; ++m) {
      if (block_in_slot(m) == block) continue;
      message("Reading flow variable ", m, " for grid ", block);
      unit_of(m).read({recordio::values(slot_of(slots, m), combination.points.npts(block))},
                      recordio::RestOfRecord::refused);
      block_in_slot(m) = block;
    }
  }
};

/// Refuses invalid arguments before a file is opened.
template <class Lead>
void check_arguments(const Combination<Lead>& combination) {
  const FileName& filename = combination.filename;
  for (integer m = 1; m <= combination.variables; ++m) {
    if (!same_file(filename, tmpfile(m))) continue;
    refuse_restart(filename, "it is the temporary file of variable " + std::to_string(m));
  }
  const integer highest =
      std::max(checked_highest_to_write(combination), mod_gridvars::numrstrtvar(1));
  if (combination.nblocks > 0) check_variables(filename, highest, combination.variables);
  check_parameters_to_write(combination, combination.nparamrows);
  check_triplets(combination, "leadvalues", combination.leadvalues.extents());
}

template <class Real, class Lead>
void write_body(const Combination<Lead>& combination) {
  integer largest = 0;
  for (const integer points : combination.points.npts.span()) largest = std::max(largest, points);
  allocatable<Real, 2> slots;
  if (!allocate_checked(slots, largest, combination.variables)) {
    refuse_restart(combination.filename, "out of memory for one block of all variables");
  }
  const auto records = block_records_with_leading(combination);
  Combiner<Real, Lead> combiner{combination, records, std::move(slots)};
  write_records(combination.unit, {records, combination.nblocks, combination.layout.extensions},
                combiner);
  combiner.expect_ends();
}

void fail_if(const std::string& reason) {
  if (!reason.empty()) fail_run(reason);
}

template <class Lead>
void combine_variable_files(array_view<const Lead, 2> leadvalues, const RestartArguments& arguments,
                            integer nparamrows, integer nblocks, const ExtentViews& extents) try {
  const FileName& filename = arguments.filename;
  check_layout(arguments);
  Combination<Lead> combination{{arguments, unit_number::restart_write, nblocks},
                                leadvalues,
                                nparamrows,
                                variables_per_point()};
  combination.points = checked_numbering(restart_file(filename), nblocks, extents);
  const bool writable = combination.unit.known() && combination.layout.writable;
  if (combination.variables > tmpfile.size()) {
    refuse_restart(filename, std::to_string(combination.variables) +
                                 " variables cannot be combined, at most " +
                                 std::to_string(tmpfile.size()) + " can");
  }
  if (writable) check_arguments(combination);
  // The table is not used, but hosts are told of its allocation.
  allocatable<integer, 1> units;
  if (!allocate_checked(units, combination.variables)) {
    refuse_restart(filename, "out of memory for the table of units");
  }
  write_line("");
  message("Combining the Temporary Variable Files into ", left_adjusted(filename));
  for (integer m = 1; m <= combination.variables; ++m) {
    message("Reading variable ", m, " from file", left_adjusted(tmpfile(m)));
    open_variable_file(m);
  }
  write_restart_header(combination, extents);
  if (writable) {
    create_parameters_to_write(combination, nparamrows);
    try {
      holds_singles(combination.coding) ? write_body<float>(combination)
                                        : write_body<double>(combination);
    } catch (const FailedRead&) {
      // By design the temporary data are deleted before the failure is reported.
      const std::string reason = delete_variable_files(combination.variables);
      host::dispfilereaderror();
      return fail_if(reason);
    }
  }
  // Some file systems report a full disk only now. The temporary files still exist then.
  combination.unit.close();
  fail_if(delete_variable_files(combination.variables));
} catch (...) {
  end_operation("write restart file", arguments.filename);
}

}  // namespace

void combinep3dvarfiles(array_view<const float, 2> leadvalues, const FileName& filename,
                        integer iformat, logical dblprec, integer nparamrows, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock) {
  combine_variable_files(leadvalues, {filename, iformat, dblprec, rsttype, multiblock}, nparamrows,
                         nblocks, {idim, jdim, kdim});
}

void combinep3dvarfiles(array_argument<const double, 2> leadvalues, const FileName& filename,
                        integer iformat, logical dblprec, integer nparamrows, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock) {
  combine_variable_files<double>(leadvalues, {filename, iformat, dblprec, rsttype, multiblock},
                                 nparamrows, nblocks, {idim, jdim, kdim});
}

}  // namespace mod_p3dgrid
