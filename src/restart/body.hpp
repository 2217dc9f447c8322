#pragma once

#include <cstdint>
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

enum class BodyRecordKind : std::uint8_t { parameters, leading, section, older_level };

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
/// @param leading       the block begins with the leading record; older levels do not occur then
/// @param older_levels  records of older time levels behind the sections
[[nodiscard]] std::vector<BodyRecord> block_records(const Layout& layout, bool leading,
                                                    integer older_levels);

/// Records of older time levels per block that a whole read finds, by `itimeint`.
[[nodiscard]] integer older_levels();

/// Highest variable number for which the records need a place; 0 for none. Variables numbered
/// below 1, which no array has a place for, are an error of the run.
[[nodiscard]] integer checked_highest_variable(const std::vector<BodyRecord>& records);

/// Variables per point of all sections: the sum of `numrstrtvar`.
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

/// Whether the chain in `iflag` ends within it.
[[nodiscard]] bool extension_chain_ends();

/// Walks a body in file order.
///
/// The visitor has
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
    const BodyRecord record{BodyRecordKind::section, extension->first, extension->last};
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

/// The list entry for variables `first` to `last` of a block, in an array (variable, point).
/// @param array  data of the array, whose first extent is `stride`
template <class Real>
[[nodiscard]] auto variable_lines(Real* array, std::int64_t stride, const PointNumbering& points,
                                  integer block, integer first, integer last) {
  const std::int64_t variables = last < first ? 0 : std::int64_t{last} - first + 1;
  const std::int64_t point = points.before(block);
  // Without values there is no place to begin at, whatever variable the record names.
  const bool empty = variables == 0 || points.npts(block) == 0;
  Real* const begin = empty ? nullptr : array + point * stride + (first - 1);
  return recordio::lines(begin, variables, stride, empty ? 0 : points.npts(block));
}

/// The list entry for the four flow parameters in a row of `sqvar` or `dqvar`.
template <class Parameters>
[[nodiscard]] auto parameter_row(Parameters& parameters, integer row) {
  return recordio::lines(parameters.data() + (row - 1), 1, parameters.extent(1), 4);
}

}  // namespace mod_p3dgrid
