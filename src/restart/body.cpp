#include "restart/body.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <string>
#include <utility>

#include "mod_gridvars.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {

using recordio::FileKind;

BodyPath body_path(const recordio::Unit& unit, logical dblprec) {
  if (!unit.stores_kinds()) return BodyPath::text;
  return dblprec ? BodyPath::double_records : BodyPath::single_records;
}

FileKind real_kind(BodyPath path) {
  return path == BodyPath::double_records ? FileKind::real8 : FileKind::real4;
}

bool parameters_are_double(BodyPath path) {
  return path != BodyPath::single_records;
}

bool whole_read_takes_leading_record(const Layout& layout, BodyPath path) {
  return layout.triplets && (layout.extensions || path != BodyPath::single_records);
}

std::vector<BodyRecord> block_records(const Layout& layout, std::optional<integer> leading,
                                      integer older_levels) {
  const auto& sections = mod_gridvars::rstrtvarsct;
  const integer sections_in_use = mod_gridvars::nfilesect;
  if (sections_in_use > sections.extent(1)) {
    fail_run("nfilesect is " + std::to_string(sections_in_use) + ", the section table holds " +
             std::to_string(sections.extent(1)));
  }
  std::vector<BodyRecord> records;
  if (layout.parameters) records.push_back({BodyRecordKind::parameters});
  if (leading) records.push_back({BodyRecordKind::leading, 1, *leading});
  for (integer k = leading ? 2 : 1; k <= sections_in_use; ++k) {
    records.push_back({BodyRecordKind::section, sections(k, 1), sections(k, 2)});
  }
  for (integer level = 0; !leading && level < older_levels; ++level) {
    records.push_back({BodyRecordKind::older_level, sections(1, 1), sections(1, 2)});
  }
  return records;
}

std::vector<BodyRecord> block_records_with_leading(const Layout& layout, integer older_levels) {
  if (!layout.triplets) return block_records(layout, std::nullopt, older_levels);
  return block_records(layout, mod_gridvars::numrstrtvar(1), older_levels);
}

integer older_levels() {
  constexpr integer two_older_levels = 3;
  return itimeint == two_older_levels ? 2 : itimeint >= 2 ? 1 : 0;
}

integer checked_highest_variable(const std::vector<BodyRecord>& records) {
  integer highest = 0;
  for (const BodyRecord& record : records) {
    if (record.kind == BodyRecordKind::older_level || record.variables() == 0) continue;
    if (record.first < 1) {
      fail_run("the section table names variables " + std::to_string(record.first) + " to " +
               std::to_string(record.last) + ", they count from 1");
    }
    highest = std::max(highest, record.last);
  }
  return highest;
}

std::int64_t variables_per_point() {
  const auto counts = mod_gridvars::numrstrtvar.span();
  return std::max<std::int64_t>(0, std::accumulate(counts.begin(), counts.end(), std::int64_t{0}));
}

integer most_variables() {
  const auto counts = std::as_const(nfvar).span();
  return counts.empty() ? std::numeric_limits<integer>::min()
                        : *std::max_element(counts.begin(), counts.end());
}

const Extension* extension_of(integer flag, integer position) {
  static constexpr Extension five_variables{6, 10, 5, 5};
  static constexpr Extension three_variables{6, 8, 5, 3};
  static constexpr Extension three_more_variables{11, 13, 10, 8};
  if (flag == 1) return &five_variables;
  if (flag == 41 && position == 1) return &three_variables;
  if (flag == 41 && position == 2) return &three_more_variables;
  return nullptr;  // 41 further on has no meaning, like any other flag
}

integer highest_extension_variable() {
  integer highest = 0;
  for (integer m = 1; m <= iflag.size() && iflag(m) != end_of_extensions; ++m) {
    if (const Extension* const extension = extension_of(iflag(m), m)) {
      highest = std::max(highest, extension->last);
    }
  }
  return highest;
}

void check_still_held(std::int64_t first, std::int64_t last, std::int64_t held) {
  if (first >= 1 && last <= held) return;
  fail_run("the section table was changed while it was in use: variables " + std::to_string(first) +
           " to " + std::to_string(last) + " of " + std::to_string(held));
}

void check_still_held(const char* array, std::int64_t row, std::int64_t held) {
  if (row >= 1 && row <= held) return;
  fail_run(std::string(array) + " was changed while it was in use: row " + std::to_string(row) +
           " of " + std::to_string(held));
}

integer variables_of_block(integer block) {
  check_still_held("nfvar", block, nfvar.size());
  return nfvar(block);
}

bool skip_older_level(const recordio::Unit& unit, BodyPath path, integer points,
                      const BodyRecord& record) {
  // The table may name more variables than 64 bits count the bytes of, and no file holds.
  constexpr std::int64_t most =
      std::numeric_limits<std::int64_t>::max() / bytes_of(FileKind::real8);
  const std::int64_t values = std::min(most, record.variables() * points);
  return unit.read({recordio::dropped(real_kind(path), values)});
}

bool ReadingVisitor::move_flag(integer position) const {
  return unit_.read({recordio::scalar(iflag(position))});
}

bool ReadingVisitor::chain_without_end() const {
  unit_.fail("three flags, none of them 999", "a chain of at most three flags that ends with 999");
  return false;
}

bool WritingVisitor::move_flag(integer position) const {
  unit_.write({recordio::scalar(std::as_const(iflag)(position))});
  return true;
}

bool extension_chain_ends() {
  const auto flags = iflag.span();
  return std::find(flags.begin(), flags.end(), end_of_extensions) != flags.end();
}

}  // namespace mod_p3dgrid
