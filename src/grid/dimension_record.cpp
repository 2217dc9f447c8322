#include "grid/dimension_record.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Arrays for so many blocks are allocated without checking the length of the file: 4 MiB each, and
/// far more blocks than grids have.
constexpr integer trusted_blocks = integer{1} << 20;

template <class ColumnList>
bool long_enough(const ColumnList& columns, integer nblocks) {
  return std::all_of(columns.begin(), columns.end(),
                     [&](const auto& column) { return column.extent(1) >= nblocks; });
}

template <class Int, class ColumnList>
std::vector<Int*> beginnings(const ColumnList& columns) {
  std::vector<Int*> first;
  for (const auto& column : columns) first.push_back(column.data());
  return first;
}

}  // namespace

bool read_dimensions(const recordio::Unit& unit, p3dgrid::DimensionKind kind, integer nblocks,
                     Columns columns) {
  if (!long_enough(columns, nblocks)) {
    unit.fail("no array to read into", "the extents of " + std::to_string(nblocks) + " blocks");
    return false;
  }
  return p3dgrid::walk_dimensions<integer>(
      kind, nblocks, beginnings<integer>(columns),
      [&](const recordio::ReadList& list) { return unit.read(list); });
}

void write_dimensions(const recordio::Unit& unit, p3dgrid::DimensionKind kind, integer nblocks,
                      ConstColumns columns) {
  if (!long_enough(columns, nblocks)) {
    fail_run("cannot write the extents of " + std::to_string(nblocks) +
             " blocks: the arrays are shorter");
  }
  p3dgrid::walk_dimensions<const integer>(kind, nblocks, beginnings<const integer>(columns),
                                          [&](const recordio::WriteList& list) {
                                            unit.write(list);
                                            return true;
                                          });
}

bool can_hold_dimensions(const recordio::Unit& unit, integer nblocks, recordio::Claim claim) {
  using recordio::FileKind;
  constexpr std::int64_t extents_per_block = 3;
  if (nblocks <= trusted_blocks) return true;
  const std::string announced = "the extents of " + std::to_string(nblocks) + " blocks";
  // A repeat count may stand for all extents of a text, but each block has a line of its own behind
  // them.
  return unit.can_hold(nblocks, FileKind::integer4, recordio::Claim::records, announced) &&
         unit.can_hold(nblocks * extents_per_block, FileKind::integer4, claim, announced);
}

void fail_on_extents(const recordio::Unit& unit, integer block, integer i, integer j, integer k) {
  unit.fail("block " + std::to_string(block) + " of " + std::to_string(i) + " x " +
                std::to_string(j) + " x " + std::to_string(k) + " points",
            "extents from 0 on, and points that 32 bits can count");
}

}  // namespace mod_p3dgrid
