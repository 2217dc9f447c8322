#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "recordio/unit.hpp"
#include "restart/layout.hpp"
#include "state/point_numbering.hpp"

/// The body of a restart file: which records follow the header, in which order, holding what. It
/// stands here once, for whoever reads it, picks a variable out of it or writes it.
///
///     body    = block of grid 1 ... block of grid n, [ extensions ]
///     block   = [ parameters ], ( sections 1.. | leading, sections 2.. ), older levels
///     section = each variable of the section at all points of the block
///     leading = three values per point, value after value, then variables 1 to numrstrtvar(1)
///     extensions = flag, [ its variables, a record per block ], ... , the flag 999
///
/// Every record holds its variables one after another, each at the block's points in order.
namespace mod_p3dgrid {

/// How the values of a body are moved.
enum class BodyPath : std::uint8_t {
  single_records,  ///< unformatted or binary, single precision
  double_records,  ///< unformatted or binary, double precision, by way of a staging array
  text,            ///< list-directed; single precision in memory, whatever the precision flag says
};

[[nodiscard]] BodyPath body_path(const recordio::Unit& unit, logical dblprec);

/// Kind of the reals in the file.
[[nodiscard]] recordio::FileKind real_kind(BodyPath path);

/// Whether the flow parameters of layout 2 live in `dqvar` rather than `sqvar`. Text always keeps
/// them in double precision.
[[nodiscard]] bool parameters_are_double(BodyPath path);

enum class BodyRecordKind : std::uint8_t { parameters, leading, section, extension, older_level };

struct BodyRecord {
  BodyRecordKind kind;
  integer first = 1;  ///< first variable
  integer last = 0;   ///< last variable; below the first for a record of none

  [[nodiscard]] std::int64_t variables() const {
    return last < first ? 0 : std::int64_t{last} - first + 1;
  }
};

/// Whether the blocks begin with the leading record. `readp3drestart` does not take it for layout
/// 100 in single-precision records: there the file is read as ordinary sections and the triplets
/// are not filled. Writers and the one-variable reader always take it.
[[nodiscard]] bool whole_read_takes_leading_record(const Layout& layout, BodyPath path);

/// The records of one block, by the section table of `mod_gridvars` as it stands. More sections
/// than the table holds are an error of the run.
/// @param leading       variables in the leading record; none if blocks do not begin with it.
///                      Older levels do not occur then
/// @param older_levels  records of older time levels behind the sections
[[nodiscard]] std::vector<BodyRecord> block_records(const Layout& layout,
                                                    std::optional<integer> leading,
                                                    integer older_levels);

/// Variables in the leading record that a whole read finds, whatever the table says.
inline constexpr integer leading_variables = 5;

/// The records of a block for those who always take the leading record.
[[nodiscard]] std::vector<BodyRecord> block_records_with_leading(const Layout& layout,
                                                                 integer older_levels = 0);

/// Records of older time levels per block that a read finds, by `itimeint`.
[[nodiscard]] integer older_levels();

/// Highest variable number for which the records need a place; 0 for none. Variables numbered
/// below 1, which no array has a place for, are an error of the run. Older levels need no place:
/// nothing of them is kept.
[[nodiscard]] integer checked_highest_variable(const std::vector<BodyRecord>& records);

/// Variables per point of all sections: the sum of `numrstrtvar`, or 0 if that is negative.
[[nodiscard]] std::int64_t variables_per_point();

/// Largest entry of `nfvar`; the smallest integer if it has none.
[[nodiscard]] integer most_variables();

/// The variables that a flag behind the blocks of layout 101 announces.
struct Extension {
  integer first;
  integer last;
  integer kept;         ///< variables that stay when the flow array is enlarged to `last`
  integer numrstrtvar;  ///< what entry 2 of that array becomes
};

inline constexpr integer end_of_extensions = 999;

/// What flag `flag` at position `position` announces; null for nothing.
[[nodiscard]] const Extension* extension_of(integer flag, integer position);

/// Highest variable that the extensions of the chain in `iflag` name; 0 for none.
[[nodiscard]] integer highest_extension_variable();

/// Whether the chain in `iflag` ends within it.
[[nodiscard]] bool extension_chain_ends();

/// Walks a body in file order.
///
/// `walk_body` goes through blocks and extensions, `walk_blocks` through the blocks alone. The
/// visitor has
/// - `bool begin_block(integer block)`,
/// - `bool move(integer block, const BodyRecord&)`, which reads or writes one record,
/// - `bool move_flag(integer position)`, which reads or writes `iflag(position)`,
/// - `bool extend(const Extension&)`, before the records of an extension,
/// - `bool chain_without_end()`, when `iflag` is used up.
/// The walk ends at the first that returns false, and returns what it ended with.
template <class Visitor>
bool walk_extensions(integer nblocks, Visitor& visitor) {
  for (integer m = 1; m <= iflag.size(); ++m) {
    if (!visitor.move_flag(m)) return false;
    if (iflag(m) == end_of_extensions) return true;
    const Extension* const extension = extension_of(iflag(m), m);
    if (extension == nullptr) continue;
    if (!visitor.extend(*extension)) return false;
    const BodyRecord record{BodyRecordKind::extension, extension->first, extension->last};
    for (integer b = 1; b <= nblocks; ++b) {
      if (!visitor.move(b, record)) return false;
    }
  }
  return visitor.chain_without_end();
}

template <class Visitor>
bool walk_blocks(const std::vector<BodyRecord>& records, integer nblocks, Visitor& visitor) {
  for (integer b = 1; b <= nblocks; ++b) {
    if (!visitor.begin_block(b)) return false;
    for (const BodyRecord& record : records) {
      if (!visitor.move(b, record)) return false;
    }
  }
  return true;
}

template <class Visitor>
bool walk_body(const Layout& layout, const std::vector<BodyRecord>& records, integer nblocks,
               Visitor& visitor) {
  return walk_blocks(records, nblocks, visitor) &&
         (!layout.extensions || walk_extensions(nblocks, visitor));
}

/// Reads a record of an older time level and drops it. Not for text, which has no such records.
[[nodiscard]] bool skip_older_level(const recordio::Unit& unit, BodyPath path, integer points,
                                    const BodyRecord& record);

/// What visitors that read a body have in common: flags are read into `iflag`, and a chain of them
/// that does not end is a failed read.
class ReadingVisitor {
 public:
  [[nodiscard]] bool move_flag(integer position) const;
  [[nodiscard]] bool chain_without_end() const;

 protected:
  explicit ReadingVisitor(const recordio::Unit& unit) : unit_(unit) {}
  const recordio::Unit& unit_;
};

/// What visitors that write a body have in common: flags are written from `iflag`, whose chain has
/// been seen to end before the file was opened.
class WritingVisitor {
 public:
  [[nodiscard]] bool move_flag(integer position) const;
  [[nodiscard]] bool chain_without_end() const { return true; }

 protected:
  explicit WritingVisitor(const recordio::Unit& unit) : unit_(unit) {}
  const recordio::Unit& unit_;
};

/// The list of what a record of a block holds, put together by whoever has the values: `arrays`
/// adds the entries for
/// - `add_parameters(list, block)`, the four flow parameters,
/// - `add_triplets(list, block)`, the three values per point,
/// - `add_variables(list, block, first, last)`, variables in turn.
/// Records of older time levels are not listed here: nobody keeps or writes their values.
template <class Memory, class Arrays>
[[nodiscard]] recordio::RecordList<Memory> list_of(Arrays& arrays, integer block,
                                                   const BodyRecord& record) {
  recordio::RecordList<Memory> list;
  if (record.kind == BodyRecordKind::parameters) {
    arrays.add_parameters(list, block);
    return list;
  }
  if (record.kind == BodyRecordKind::leading) arrays.add_triplets(list, block);
  arrays.add_variables(list, block, record.first, record.last);
  return list;
}

/// Values per point at the head of a leading record.
inline constexpr std::int64_t triplet = 3;

inline constexpr integer parameters_per_block = 4;

/// Ends the run if the records ask for variables beyond the `held` ones. They were looked at before
/// the first was read or written; but a host that is told of something may change the section
/// table.
void check_still_held(std::int64_t first, std::int64_t last, std::int64_t held);

/// The same for the rows of a module array of a value or more for each block.
void check_still_held(const char* array, std::int64_t row, std::int64_t held);

/// Variables of a block, of those layouts that count them for each block.
[[nodiscard]] integer variables_of_block(integer block);

/// The list entry for variables `first` to `last` of a block, in an array (variable, point).
template <class Real>
[[nodiscard]] auto variable_lines(array_view<Real, 2> array, const PointNumbering& points,
                                  integer block, integer first, integer last) {
  const std::int64_t variables = last < first ? 0 : std::int64_t{last} - first + 1;
  // Without values there is no place to begin at, whatever variable the record names.
  const bool empty = variables == 0 || points.npts(block) == 0;
  if (!empty) check_still_held(first, last, array.extent(1));
  const std::int64_t stride = array.extent(1);
  Real* const begin = empty ? nullptr : array.data() + points.before(block) * stride + (first - 1);
  return recordio::lines(begin, variables, stride, empty ? 0 : points.npts(block));
}

/// The list entry for the flow parameters in a row of `sqvar` or `dqvar`, as the path has it.
template <class Memory>
[[nodiscard]] recordio::Values<Memory> parameter_row(BodyPath path, integer row) {
  const auto entry = [row](const char* name, auto& parameters) -> recordio::Values<Memory> {
    check_still_held(name, row,
                     parameters.extent(2) < parameters_per_block ? 0 : parameters.extent(1));
    const auto kind = recordio::kind_of<std::remove_reference_t<decltype(*parameters.data())>>();
    return {
        kind, kind, parameters.data() + (row - 1), 1, parameters.extent(1), parameters_per_block};
  };
  return parameters_are_double(path) ? entry("dqvar", dqvar) : entry("sqvar", sqvar);
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
  BodyPath path;
  const PointNumbering& points;
  array_view<Real, 2> flow;      ///< (variable, point)
  array_view<Real, 2> triplets;  ///< (3, point)
  integer last_parameter_row;    ///< row that serves all further blocks
  StagingArrays staging = {};

  template <class List>
  void add_parameters(List& list, integer block) const {
    list.push_back(
        parameter_row<recordio::MemoryOf<Real>>(path, std::min(block, last_parameter_row)));
  }
  template <class List>
  void add_triplets(List& list, integer block) const {
    list.push_back(
        recordio::by_way_of(staging.triplets, variable_lines(triplets, points, block, 1, triplet)));
  }
  template <class List>
  void add_variables(List& list, integer block, integer first, integer last) const {
    list.push_back(
        recordio::by_way_of(staging.flow, variable_lines(flow, points, block, first, last)));
  }
};

}  // namespace mod_p3dgrid
