#include "restart/body.hpp"

#include <limits>
#include <numeric>
#include <string>
#include <utility>

#include "mod_gridvars.hpp"
#include "state/run_end.hpp"

namespace mod_p3dgrid {

using recordio::FileKind;

std::vector<BodyRecord> block_records(const RestartFile& file, std::optional<integer> leading,
                                      integer older_levels) {
  const auto& table = mod_gridvars::rstrtvarsct;
  const integer sections_in_use = mod_gridvars::nfilesect;
  if (sections_in_use > table.extent(1)) {
    fail_run("nfilesect is " + std::to_string(sections_in_use) + ", the section table holds " +
             std::to_string(table.extent(1)));
  }
  p3dgrid::BlockShape shape{.sections = {},
                            .leading = leading,
                            .older_levels = older_levels,
                            .older = {table(1, 1), table(1, 2)}};
  for (integer k = 1; k <= sections_in_use; ++k) {
    shape.sections.push_back({table(k, 1), table(k, 2)});
  }
  return p3dgrid::block_records(file.layout, file.coding, shape);
}

std::vector<BodyRecord> block_records_with_leading(const RestartFile& file, integer older_levels) {
  if (!file.layout.triplets) return block_records(file, std::nullopt, older_levels);
  return block_records(file, mod_gridvars::numrstrtvar(1), older_levels);
}

integer checked_highest_variable(const std::vector<BodyRecord>& records) {
  integer highest = 0;
  for (const BodyRecord& record : records) {
    if (record.kind == BodyRecordKind::older_level || record.variables.variables() == 0) continue;
    if (record.variables.first < 1) {
      fail_run("the section table names variables " + std::to_string(record.variables.first) +
               " to " + std::to_string(record.variables.last) + ", they count from 1");
    }
    highest = std::max(highest, record.variables.last);
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

integer highest_extension_variable() {
  integer highest = 0;
  for (integer m = 1; m <= iflag.size() && iflag(m) != p3dgrid::end_of_extensions; ++m) {
    if (const Extension* const extension = p3dgrid::extension_of(iflag(m), m)) {
      highest = std::max(highest, extension->variables.last);
    }
  }
  return highest;
}

void check_unchanged(const p3dgrid::Section& variables, std::int64_t held) {
  const auto [first, last] = variables;
  if (first >= 1 && last <= held) return;
  fail_run("the section table was changed while it was in use: variables " + std::to_string(first) +
           " to " + std::to_string(last) + " of " + std::to_string(held));
}

void check_unchanged(const char* array, std::int64_t row, std::int64_t held) {
  if (row >= 1 && row <= held) return;
  fail_run(std::string(array) + " was changed while it was in use: row " + std::to_string(row) +
           " of " + std::to_string(held));
}

integer variables_of_block(integer block) {
  check_unchanged("nfvar", block, nfvar.size());
  return nfvar(block);
}

void skip_older_level(const RestartFile& file, const BodyRecord& record) {
  if (is_text(file.coding)) {
    file.unit.fail("a text file", "an unformatted record of an older time level");
  }
  // With an invalid table the number of bytes could exceed 64 bits.
  constexpr std::int64_t most =
      std::numeric_limits<std::int64_t>::max() / bytes_of(FileKind::real8);
  const std::int64_t values =
      std::min(most, record.values_per_point() * file.points.npts(record.block));
  file.unit.read({recordio::dropped(real_kind(file.coding), values)});
}

bool extension_chain_ends() {
  const auto flags = iflag.span();
  return std::find(flags.begin(), flags.end(), p3dgrid::end_of_extensions) != flags.end();
}

}  // namespace mod_p3dgrid
