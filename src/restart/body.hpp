#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "format/body.hpp"
#include "format/header.hpp"
#include "state/point_numbering.hpp"
#include "state/unit.hpp"

/// How the operations read and write the records of a body (`format/body.hpp`): by the section
/// table and the module variables, into and out of the arrays of their callers.
namespace mod_p3dgrid {

using p3dgrid::BodyRecord;
using p3dgrid::BodyRecordKind;
using p3dgrid::BodyWalk;
using p3dgrid::Coding;
using p3dgrid::Extension;
using p3dgrid::LayoutTraits;
using p3dgrid::real_kind;
using p3dgrid::triplet;

/// The coding of the file on a unit, except for its byte order, which the unit applies itself.
[[nodiscard]] Coding coding_of(const Unit& unit, logical dblprec);

/// Whether the flow parameters of layout 2 live in `dqvar` rather than `sqvar`. Text always keeps
/// them in double precision.
[[nodiscard]] bool parameters_are_double(const Coding& coding);

/// Variables in the leading record that a whole read finds, whatever the table says.
inline constexpr integer leading_variables = p3dgrid::solution_variables;

/// The records of one block, by the section table of `mod_gridvars` as it stands. More sections
/// than the table holds are a fatal error.
/// @param leading       variables in the leading record; none if blocks do not begin with it
/// @param older_levels  records of older time levels behind the sections
[[nodiscard]] std::vector<BodyRecord> block_records(const LayoutTraits& layout,
                                                    std::optional<integer> leading,
                                                    integer older_levels);

/// The records of a block for those who always take the leading record.
[[nodiscard]] std::vector<BodyRecord> block_records_with_leading(const LayoutTraits& layout,
                                                                 integer older_levels = 0);

/// Highest variable number for which the records need a place; 0 for none. Variables numbered
/// below 1 are a fatal error. Older levels are not counted, because their values are dropped.
[[nodiscard]] integer checked_highest_variable(const std::vector<BodyRecord>& records);

/// Variables per point of all sections: the sum of `numrstrtvar`, or 0 if that is negative.
[[nodiscard]] std::int64_t variables_per_point();

/// Largest entry of `nfvar`; the smallest integer if it has none.
[[nodiscard]] integer most_variables();

/// Highest variable that the extensions of the chain in `iflag` name; 0 for none.
[[nodiscard]] integer highest_extension_variable();

/// Whether the chain in `iflag` ends within it.
[[nodiscard]] bool extension_chain_ends();

/// Goes through a body in file order. The visitor has
/// - `begin_block(integer block)`,
/// - `move(const BodyRecord&)`, which reads or writes one record,
/// - `move_flag(integer position)`, which reads or writes `iflag(position)`,
/// - `extend(const Extension&)`, before the records of an extension,
/// - `chain_without_end()`, when `iflag` is used up.
template <class Visitor>
void walk_body(BodyWalk walk, Visitor& visitor) {
  while (const std::optional<BodyRecord> record = walk.next()) {
    if (record->kind == BodyRecordKind::block) {
      visitor.begin_block(record->block);
    } else if (record->kind == BodyRecordKind::flag) {
      visitor.move_flag(record->flag);
      const integer flag = iflag(record->flag);
      walk.take_flag(flag);
      const Extension* const extension = p3dgrid::extension_of(flag, record->flag);
      if (extension != nullptr) visitor.extend(*extension);
    } else {
      visitor.move(*record);
    }
  }
  if (walk.chain_without_end()) visitor.chain_without_end();
}

/// Reads a record of an older time level and drops it. Not for text, which has no such records.
void skip_older_level(const Unit& unit, const Coding& coding, integer points,
                      const BodyRecord& record);

/// What visitors that read a body have in common: flags are read into `iflag`, and a chain of them
/// that does not end is a failed read.
class ReadingVisitor {
 public:
  void move_flag(integer position) const;
  void chain_without_end() const;

 protected:
  explicit ReadingVisitor(const Unit& unit) : unit_(unit) {}
  const Unit& unit_;
};

/// What visitors that write a body have in common: flags are written from `iflag`, whose chain has
/// been seen to end before the file was opened.
class WritingVisitor {
 public:
  void move_flag(integer position) const;
  void chain_without_end() const {}

 protected:
  explicit WritingVisitor(const Unit& unit) : unit_(unit) {}
  const Unit& unit_;
};

/// The list of what a record of a block holds, put together by whoever has the values: `arrays`
/// adds the entries for
/// - `add_parameters(list, record)`, the flow parameters,
/// - `add_triplets(list, block)`, the three values per point,
/// - `add_variables(list, block, first, last)`, variables in turn.
/// Records of older time levels are not listed here: nobody keeps or writes their values.
template <class Memory, class Arrays>
[[nodiscard]] recordio::RecordList<Memory> list_of(Arrays& arrays, const BodyRecord& record) {
  recordio::RecordList<Memory> list;
  if (record.kind == BodyRecordKind::parameters) {
    arrays.add_parameters(list, record);
    return list;
  }
  if (record.kind == BodyRecordKind::leading) arrays.add_triplets(list, record.block);
  arrays.add_variables(list, record.block, record.variables);
  return list;
}

/// Ends the run if the records ask for variables beyond the `held` ones. They were looked at before
/// the first was read or written; but a host that is told of something may change the section
/// table.
void check_still_held(const p3dgrid::Section& variables, std::int64_t held);

/// The same for the rows of a module array of a value or more for each block.
void check_still_held(const char* array, std::int64_t row, std::int64_t held);

/// Variables of a block, of those layouts that count them for each block.
[[nodiscard]] integer variables_of_block(integer block);

/// The list entry for some variables of a block, in an array (variable, point).
template <class Real>
[[nodiscard]] auto variable_lines(array_view<Real, 2> array, const PointNumbering& points,
                                  integer block, const p3dgrid::Section& section) {
  const std::int64_t variables = section.variables();
  // Without values there is no place to begin at, whatever variable the record names.
  const bool empty = variables == 0 || points.npts(block) == 0;
  if (!empty) check_still_held(section, array.extent(1));
  const std::int64_t stride = array.extent(1);
  Real* const begin =
      empty ? nullptr : array.data() + points.before(block) * stride + (section.first - 1);
  return recordio::lines(begin, variables, stride, empty ? 0 : points.npts(block));
}

/// The list entry for the flow parameters in a row of `sqvar` or `dqvar`, as the coding has it.
template <class Memory>
[[nodiscard]] recordio::Values<Memory> parameter_row(const Coding& coding, const BodyRecord& record,
                                                     integer row) {
  const integer count = record.parameters;
  const auto entry = [row, count](const char* name, auto& parameters) -> recordio::Values<Memory> {
    check_still_held(name, row, parameters.extent(2) < count ? 0 : parameters.extent(1));
    const auto kind = recordio::kind_of<std::remove_reference_t<decltype(*parameters.data())>>();
    return {kind, kind, parameters.data() + (row - 1), 1, parameters.extent(1), count};
  };
  return parameters_are_double(coding) ? entry("dqvar", dqvar) : entry("sqvar", sqvar);
}

/// Arrays in double precision that the values of a file pass through, as large as those that they
/// come from or go to; empty where none do.
struct StagingArrays {
  array_view<double, 2> flow;
  array_view<double, 2> triplets;
};

/// Arrays that hold all variables of all points: what a whole body is read into or written from.
/// `Real` is const for writing.
template <class Real>
struct WholeArrays {
  Coding coding;
  const PointNumbering& points;
  array_view<Real, 2> flow;      ///< (variable, point)
  array_view<Real, 2> triplets;  ///< (3, point)
  integer last_parameter_row;    ///< row that serves all further blocks
  StagingArrays staging = {};

  template <class List>
  void add_parameters(List& list, const BodyRecord& record) const {
    list.push_back(parameter_row<recordio::MemoryOf<Real>>(
        coding, record, std::min(record.block, last_parameter_row)));
  }
  template <class List>
  void add_triplets(List& list, integer block) const {
    list.push_back(recordio::by_way_of(staging.triplets,
                                       variable_lines(triplets, points, block, {1, triplet})));
  }
  template <class List>
  void add_variables(List& list, integer block, const p3dgrid::Section& variables) const {
    list.push_back(
        recordio::by_way_of(staging.flow, variable_lines(flow, points, block, variables)));
  }
};

}  // namespace mod_p3dgrid
