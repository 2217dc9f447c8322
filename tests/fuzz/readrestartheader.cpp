/// Reads headers of restart files.

#include <algorithm>

#include "target.hpp"

namespace fuzz {

using namespace mod_p3dgrid;

void place_files(const Options& options, Content content) {
  place_file(options, "restart", content);
}

void run_operation(const Options& options) {
  integer nblocks = 0;
  allocatable<integer, 1> idim, jdim, kdim;
  const auto read = [&](auto&... extents) {
    readrestartheader("restart", format_of(options.format), has(options, double_precision), nblocks,
                      layout_code(options), has(options, multiblock), extents...);
  };
  const bool with_extents = !has(options, no_extents_wanted);
  const Outcome outcome = attempt([&] { with_extents ? read(idim, jdim, kdim) : read(); });
  if (outcome != Outcome::done || !with_extents) {
    require(!idim.allocated(), "a failed read leaves the extents alone");
    return;
  }
  for (const auto* extents : {&idim, &jdim, &kdim}) {
    require(extents->allocated() && extents->extent(1) == std::max(nblocks, 0),
            "there are extents of each block");
    touch(*extents);
  }
}

}  // namespace fuzz
