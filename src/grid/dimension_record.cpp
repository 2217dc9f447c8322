#include "grid/dimension_record.hpp"

#include <algorithm>
#include <iterator>
#include <new>
#include <string>
#include <utility>

#include "state/run_end.hpp"

namespace mod_p3dgrid {
namespace {

/// Calls `move(value of the record, entry of the column)` for all values in the record's order.
template <class ColumnList, class Move>
void for_each_value(integer* value, const ColumnList& columns, integer nblocks, Move move) {
  for (integer block = 1; block <= nblocks; ++block) {
    for (const auto& column : columns) move(*value++, column(block));
  }
}

template <class ColumnList>
bool long_enough(const ColumnList& columns, integer nblocks) {
  return std::all_of(columns.begin(), columns.end(),
                     [&](const auto& column) { return column.extent(1) >= nblocks; });
}

/// A work array for the record, the columns' entries of one block next to each other. The host
/// knows nothing of it: without memory for it the operation cannot go on.
template <class ColumnList>
allocatable<integer, 1> table_for(const ColumnList& columns, integer nblocks) {
  allocatable<integer, 1> table;
  const std::int64_t values = std::int64_t{std::max(nblocks, 0)} * std::ssize(columns);
  if (table.allocate(values) != allocation_done) throw std::bad_alloc();
  return table;
}

}  // namespace

bool read_dimension_record(const recordio::Unit& unit, integer nblocks, Columns columns) {
  if (!long_enough(columns, nblocks)) {
    unit.fail("no array to read into", "the extents of " + std::to_string(nblocks) + " blocks");
    return false;
  }
  allocatable<integer, 1> table = table_for(columns, nblocks);
  integer* const first = table.data();
  for_each_value(first, columns, nblocks, [](integer& value, integer& entry) { value = entry; });
  const bool complete = unit.read({recordio::values(first, table.size())});
  for_each_value(first, columns, nblocks, [](integer& value, integer& entry) { entry = value; });
  return complete;
}

void write_dimension_record(const recordio::Unit& unit, integer nblocks, ConstColumns columns) {
  if (!long_enough(columns, nblocks)) {
    fail_run("cannot write the extents of " + std::to_string(nblocks) +
             " blocks: the arrays are shorter");
  }
  allocatable<integer, 1> table = table_for(columns, nblocks);
  for_each_value(table.data(), columns, nblocks,
                 [](integer& value, const integer& entry) { value = entry; });
  unit.write({recordio::values(std::as_const(table).data(), table.size())});
}

bool can_hold_dimensions(const recordio::Unit& unit, integer nblocks, recordio::Claim claim) {
  using recordio::FileKind;
  constexpr std::int64_t extents_per_block = 3;
  const integer blocks = std::max(nblocks, 0);
  const std::string announced = "the extents of " + std::to_string(nblocks) + " blocks";
  // A repeat count may stand for all extents of a text, but each block has a line of its own behind
  // them.
  return unit.can_hold(blocks, FileKind::integer4, recordio::Claim::records, announced) &&
         unit.can_hold(blocks * extents_per_block, FileKind::integer4, claim, announced);
}

void fail_on_extents(const recordio::Unit& unit, integer block, integer i, integer j, integer k) {
  unit.fail("block " + std::to_string(block) + " of " + std::to_string(i) + " x " +
                std::to_string(j) + " x " + std::to_string(k) + " points",
            "extents from 0 on, and points that 32 bits can count");
}

}  // namespace mod_p3dgrid
