#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "format/body.hpp"
#include "format/header.hpp"
#include "restart/restart_file.hpp"

/// Reading and writing of the records of a body (`format/body.hpp`), with the section table, the
/// module variables and the arrays of the callers.
namespace mod_p3dgrid {

using p3dgrid::BodyRecord;
using p3dgrid::BodyRecordKind;
using p3dgrid::BodyWalk;
using p3dgrid::Extension;
using p3dgrid::real_kind;
using p3dgrid::triplet;

/// The records of one block according to the section table of `mod_gridvars`. More sections than
/// the table holds are a fatal error.
/// @param leading       variables in the leading record; none if blocks do not begin with it
/// @param older_levels  records of older time levels after the sections
[[nodiscard]] std::vector<BodyRecord> block_records(const RestartFile& file,
                                                    std::optional<integer> leading,
                                                    integer older_levels);

/// The records of a block that begins with a leading record if its layout has triplets.
[[nodiscard]] std::vector<BodyRecord> block_records_with_leading(const RestartFile& file,
                                                                 integer older_levels = 0);

/// Highest variable number in the records; 0 for none. Numbers below 1 are a fatal error. Older
/// levels are ignored, because their values are dropped.
[[nodiscard]] integer checked_highest_variable(const std::vector<BodyRecord>& records);

/// Variables per point of all sections: the sum of `numrstrtvar`, or 0 if that is negative.
[[nodiscard]] std::int64_t variables_per_point();

/// Largest entry of `nfvar`; the smallest integer if it has none.
[[nodiscard]] integer most_variables();

/// Highest variable in the extensions of the chain in `iflag`; 0 for none.
[[nodiscard]] integer highest_extension_variable();

/// Whether `iflag` contains the flag that ends the chain.
[[nodiscard]] bool extension_chain_ends();

/// Visits a body in file order. The visitor has
/// - `begin_block(integer block)`,
/// - `move(const BodyRecord&)`, which reads or writes one record,
/// - `extend(const Extension&)`, called before the records of an extension.
/// Returns false if the last entry of `iflag` does not end the chain.
/// @param move_flag  reads or writes `iflag(position)`
template <class Visitor, class MoveFlag>
bool walk_body(BodyWalk walk, Visitor& visitor, MoveFlag move_flag) {
  while (const std::optional<BodyRecord> record = walk.next()) {
    if (record->kind == BodyRecordKind::block) {
      visitor.begin_block(record->block);
    } else if (record->kind == BodyRecordKind::flag) {
      move_flag(record->flag);
      const integer flag = iflag(record->flag);
      walk.set_flag(flag);
      const Extension* const extension = p3dgrid::extension_of(flag, record->flag);
      if (extension != nullptr) visitor.extend(*extension);
    } else {
      visitor.move(*record);
    }
  }
  return !walk.unterminated_chain();
}

/// Reads a body. An unterminated chain is a failed read.
template <class Visitor>
void read_records(const Unit& unit, BodyWalk walk, Visitor& visitor) {
  const auto read_flag = [&](integer position) { unit.read({recordio::scalar(iflag(position))}); };
  if (walk_body(std::move(walk), visitor, read_flag)) return;
  unit.fail("three flags, none of them 999", "a chain of at most three flags that ends with 999");
}

/// Writes a body. The chain has been checked before the file was opened.
template <class Visitor>
void write_records(const Unit& unit, BodyWalk walk, Visitor& visitor) {
  walk_body(std::move(walk), visitor, [&](integer position) {
    unit.write({recordio::scalar(std::as_const(iflag)(position))});
  });
}

/// Reads a record of an older time level and discards it. Fails for text, which has no such
/// records.
void skip_older_level(const RestartFile& file, const BodyRecord& record);

/// The list for a record of a block. `arrays` appends the entries with
/// - `parameters_of(record)` for the flow parameters,
/// - `triplets_of(block)` for the three values per point,
/// - `add_variables(list, block, section)` for adjacent variables; the others return them.
/// Not for records of older time levels.
template <class Memory, class Arrays>
[[nodiscard]] recordio::RecordList<Memory> list_of(Arrays& arrays, const BodyRecord& record) {
  if (record.kind == BodyRecordKind::parameters) return {arrays.parameters_of(record)};
  recordio::RecordList<Memory> list;
  if (record.kind == BodyRecordKind::leading) list.push_back(arrays.triplets_of(record.block));
  for (const p3dgrid::Section& variables : record.held()) {
    arrays.add_variables(list, record.block, variables);
  }
  return list;
}

/// Terminates with an error if a record names variables beyond the `held` ones. They have been
/// checked before, but a host can change the section table in a callback.
void check_unchanged(const p3dgrid::Section& variables, std::int64_t held);

/// The same for the rows of a module array.
void check_unchanged(const char* array, std::int64_t row, std::int64_t held);

/// `nfvar(block)`, checked.
[[nodiscard]] integer variables_of_block(integer block);

/// The list entry for a section of a block in an array (variable, point).
template <class Real>
[[nodiscard]] auto variable_lines(array_view<Real, 2> array, const PointNumbering& points,
                                  integer block, const p3dgrid::Section& section) {
  const std::int64_t variables = section.variables();
  // An empty section may name variables outside of the array.
  const bool empty = variables == 0 || points.npts(block) == 0;
  if (!empty) check_unchanged(section, array.extent(1));
  const std::int64_t stride = array.extent(1);
  Real* const begin =
      empty ? nullptr : array.data() + points.before(block) * stride + (section.first - 1);
  return recordio::lines(begin, variables, stride, empty ? 0 : points.npts(block));
}

/// The list entry for the flow parameters in a row of `sqvar` or `dqvar`, depending on the coding.
template <class Memory>
[[nodiscard]] recordio::Values<Memory> parameter_row(const Coding& coding, const BodyRecord& record,
                                                     integer row) {
  const integer count = record.parameters.all;
  const auto entry = [row, count](const char* name, auto& parameters) -> recordio::Values<Memory> {
    check_unchanged(name, row, parameters.extent(2) < count ? 0 : parameters.extent(1));
    const auto kind = recordio::kind_of<std::remove_reference_t<decltype(*parameters.data())>>();
    return {kind, kind, parameters.data() + (row - 1), 1, parameters.extent(1), count};
  };
  return holds_singles(coding) ? entry("sqvar", sqvar) : entry("dqvar", dqvar);
}

/// Copies at most `rows` rows that both arrays have, rounding if those of `to` are narrower.
template <class From, class To>
void copy_rows(const From& from, To& to, std::int64_t rows, std::int64_t points) {
  const auto* const source = from.data();
  auto* const target = to.data();
  using Target = std::remove_pointer_t<decltype(to.data())>;
  rows = std::min({rows, from.extent(1), to.extent(1)});
  if (from.extent(1) == rows && to.extent(1) == rows) {
    // Contiguous values, which compilers vectorise.
    for (std::int64_t i = 0; i < rows * points; ++i) target[i] = static_cast<Target>(source[i]);
    return;
  }
  for (std::int64_t p = 0; p < points; ++p) {
    for (std::int64_t row = 0; row < rows; ++row) {
      target[p * to.extent(1) + row] = static_cast<Target>(source[p * from.extent(1) + row]);
    }
  }
}

/// Arrays of all variables at all points, for a whole body. `Real` is const for writing. The
/// staging arrays have the same extents, or are empty if file and memory hold reals of one kind.
template <class Real>
struct WholeArrays {
  const RestartFile& file;
  array_view<Real, 2> flow;      ///< (variable, point)
  array_view<Real, 2> triplets;  ///< (3, point)
  integer last_parameter_row;    ///< row for all further blocks
  array_view<p3dgrid::OtherReal<Real>, 2> flow_staging = {};
  array_view<p3dgrid::OtherReal<Real>, 2> triplet_staging = {};

  using Memory = recordio::MemoryOf<Real>;
  [[nodiscard]] recordio::Values<Memory> parameters_of(const BodyRecord& record) const {
    return parameter_row<Memory>(file.coding, record, std::min(record.block, last_parameter_row));
  }
  [[nodiscard]] recordio::Values<Memory> triplets_of(integer block) const {
    return recordio::through_staging(triplet_staging,
                                     variable_lines(triplets, file.points, block, {1, triplet}));
  }
  void add_variables(recordio::RecordList<Memory>& list, integer block,
                     const p3dgrid::Section& variables) const {
    list.push_back(recordio::through_staging(flow_staging,
                                             variable_lines(flow, file.points, block, variables)));
  }
};

}  // namespace mod_p3dgrid
