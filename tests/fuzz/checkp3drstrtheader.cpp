/// Compares headers of grids and restart files. An input holds the grid, then the restart file.

#include "target.hpp"

namespace fuzz {

using namespace mod_p3dgrid;

void place_files(const Options& options, Content content) {
  const std::size_t length = split_length(options, content);
  put_file("grid", content.first(length));
  put_file("restart", content.subspan(length));
}

void run_operation(const Options& options) {
  const Outcome outcome = attempt([&] {
    checkp3drstrtheader("grid", format_of(options.other_format), "restart",
                        format_of(options.format), has(options, double_precision),
                        layout_code(options), has(options, multiblock));
  });
  if (outcome == Outcome::done) expect_all_closed();
}

}  // namespace fuzz
