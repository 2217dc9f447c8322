/// Reads one variable of restart files.

#include <algorithm>

#include "target.hpp"

namespace fuzz {
namespace {

using namespace mod_p3dgrid;

constexpr integer rows = 2;
constexpr float untouched = -77;

bool all_untouched(const allocatable<float, 2>& values, integer row) {
  for (std::int64_t p = 1; p <= values.extent(2); ++p) {
    if (values(row, p) != untouched) return false;
  }
  return true;
}

}  // namespace

void place_files(const Options& options, Content content) {
  place_file(options, "restart", content);
}

void run_operation(const Options& options) {
  const Blocks blocks(options);
  allocatable<float, 2> varvalues;
  const std::int64_t spare = blocks.nblocks;  // for callers that count a point more in each block
  const std::int64_t points = has(options, short_values) ? blocks.total - 1 : blocks.total + spare;
  require(varvalues.allocate(rows, points) == 0, "memory suffices");
  std::ranges::fill(varvalues.span(), untouched);
  const Outcome outcome = attempt([&] {
    readnextp3dvar(options.variable, "restart", format_of(options.format),
                   has(options, double_precision), blocks.nblocks, blocks.blockpoints, varvalues,
                   blocks.idim, blocks.jdim, blocks.kdim, layout_code(options),
                   has(options, multiblock));
  });
  require(all_untouched(varvalues, 2), "rows but the first stay as they are");
  if (outcome == Outcome::done) return expect_all_closed();
  require(all_untouched(varvalues, 1), "a failed read leaves the values as they are");
}

}  // namespace fuzz
