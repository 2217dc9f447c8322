#include "block_list.hpp"

#include <charconv>
#include <optional>
#include <p3dgrid/form.hpp>
#include <string_view>

#include "failure.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

std::optional<std::int32_t> block_number_in(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
  if (error != std::errc() || end != text.end() || number < 1) return std::nullopt;
  return number;
}

/// The ranges of a list; none if `text` is no list.
std::optional<std::vector<Section>> ranges_in(std::string_view text) {
  std::vector<Section> ranges;
  for (;;) {
    const std::size_t comma = text.find(',');
    const std::string_view entry = text.substr(0, comma);
    const std::size_t dash = entry.find('-');
    const auto first = block_number_in(entry.substr(0, dash));
    const auto last = dash == entry.npos ? first : block_number_in(entry.substr(dash + 1));
    if (!first || !last || *last < *first) return std::nullopt;
    ranges.push_back({*first, *last});
    if (comma == text.npos) return ranges;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

std::string wrong_block_list(const std::string& text) {
  return ranges_in(text) ? "" : "'" + text + "' is no list of blocks such as 1,3-5";
}

std::vector<std::int32_t> blocks_in(const std::string& text, const std::string& path,
                                    std::int32_t count) {
  std::vector<std::int32_t> blocks;
  const auto ranges = ranges_in(text);
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
