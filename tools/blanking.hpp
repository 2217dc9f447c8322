#pragma once

#include <cstdint>
#include <vector>

#include "grid_file.hpp"

namespace p3dgrid::tool {

/// How often each kind of blanking value occurs.
struct BlankingCounts {
  std::int64_t blanked = 0;   ///< 0
  std::int64_t used = 0;      ///< 1
  std::int64_t negative = 0;  ///< by custom: values come from the block of that number
  std::int64_t other = 0;

  void add(mod_p3dgrid::integer value) {
    ++(value == 0 ? blanked : value == 1 ? used : value < 0 ? negative : other);
  }
  void add(const BlankingCounts& more) {
    blanked += more.blanked;
    used += more.used;
    negative += more.negative;
    other += more.other;
  }
};

/// Of each block; nothing for a grid without blanking.
[[nodiscard]] inline std::vector<BlankingCounts> count_blanking(const Grid& grid) {
  std::vector<BlankingCounts> blocks;
  const mod_p3dgrid::integer* value = grid.iblank.data();
  for (mod_p3dgrid::integer b = 1; grid.iblank.allocated() && b <= grid.blocks; ++b) {
    blocks.emplace_back();
    for (std::int64_t p = grid.points_of(b); p > 0; --p) blocks.back().add(*value++);
  }
  return blocks;
}

}  // namespace p3dgrid::tool
