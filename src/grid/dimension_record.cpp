#include "grid/dimension_record.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace mod_p3dgrid {
namespace {

/// Calls `move(value of the record, entry of the column)` for all values in the record's order.
template <class Table, class ColumnList, class Move>
void for_each_value(Table& table, const ColumnList& columns, integer nblocks, Move move) {
  std::size_t at = 0;
  for (integer block = 1; block <= nblocks; ++block) {
    for (const auto& column : columns) move(table[at++], column(block));
  }
}

std::vector<integer> table_for(integer nblocks, std::size_t columns) {
  return std::vector<integer>(static_cast<std::size_t>(std::max(nblocks, 0)) * columns);
}

}  // namespace

bool read_dimension_record(const recordio::Unit& unit, integer nblocks, Columns columns) {
  std::vector<integer> table = table_for(nblocks, columns.size());
  for_each_value(table, columns, nblocks, [](integer& value, integer& entry) { value = entry; });
  const bool complete =
      unit.read({recordio::values(table.data(), static_cast<std::int64_t>(table.size()))});
  for_each_value(table, columns, nblocks, [](integer& value, integer& entry) { entry = value; });
  return complete;
}

void write_dimension_record(const recordio::Unit& unit, integer nblocks, ConstColumns columns) {
  std::vector<integer> table = table_for(nblocks, columns.size());
  for_each_value(table, columns, nblocks,
                 [](integer& value, const integer& entry) { value = entry; });
  const integer* const first = table.data();
  unit.write({recordio::values(first, static_cast<std::int64_t>(table.size()))});
}

bool can_hold_dimensions(const recordio::Unit& unit, integer nblocks, integer columns) {
  return unit.can_hold(std::int64_t{std::max(nblocks, 0)} * columns * std::int64_t{sizeof(integer)},
                       "the extents of " + std::to_string(nblocks) + " blocks");
}

}  // namespace mod_p3dgrid
