/// Reads whole restart files.

#include "target.hpp"

namespace fuzz {

using namespace mod_p3dgrid;

void place_files(const Options& options, Content content) {
  place_file(options, "restart", content);
}

void run_operation(const Options& options) {
  const Blocks blocks(options);
  allocatable<float, 2> varvalues, auxvalues;
  if (has(options, results_allocated)) {
    require(varvalues.allocate(5, 4) == 0 && auxvalues.allocate(3, 4) == 0, "memory suffices");
  }
  const integer format = format_of(options.format);
  const Outcome outcome = attempt([&] {
    readp3drestart("restart", format, has(options, double_precision), blocks.nblocks,
                   blocks.blockpoints, varvalues, auxvalues, blocks.idim, blocks.jdim, blocks.kdim,
                   layout_code(options), has(options, multiblock));
  });
  if (outcome != Outcome::done) return;
  expect_all_closed();
  if (has(options, header_only) || !is_format(options.format)) return;
  require(varvalues.allocated(), "a whole read hands over the flow");
  require(
      varvalues.extent(2) <= blocks.total || has(options, results_allocated) || blocks.total == 0,
      "the flow has the caller's points");
  touch(varvalues);
}

}  // namespace fuzz
