#include "block_list.hpp"

#include <p3dgrid/index_range.hpp>

#include "failure.hpp"
#include "table.hpp"

namespace p3dgrid::tool {

std::string wrong_block_list(const std::string& text) {
  return numbers_in(text) ? "" : "'" + text + "' is no list of blocks such as 1,3-5";
}

std::vector<std::int32_t> blocks_in(const std::string& text, const std::string& path,
                                    std::int32_t count) {
  std::vector<std::int32_t> blocks;
  const auto ranges = numbers_in(text);
  for (const Section& range : ranges.value_or(std::vector<Section>{{1, count}})) {
    if (range.last > count) {
      throw Unusable(path + ": holds " + counted(count, "block") + ", and there is no block " +
                     std::to_string(range.last));
    }
    for (std::int32_t n = range.first; n <= range.last; ++n) blocks.push_back(n - 1);
  }
  return blocks;
}

}  // namespace p3dgrid::tool
