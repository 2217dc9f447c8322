#include "detect/words.hpp"

#include <algorithm>
#include <cstdlib>

namespace p3dgrid {
namespace {

// More than any number of blocks, and less than a NaN of single precision taken for an integer.
constexpr std::int32_t largest_small = 1 << 20;

constexpr std::int64_t stretches = 16;
constexpr std::int64_t in_a_row = 64;

}  // namespace

Words look_at_words(Evidence& file, std::int64_t begin, std::int64_t count, ByteOrder order) {
  Words words{.all = count <= stretches * in_a_row};
  const std::int64_t apart = words.all ? in_a_row : (count - in_a_row) / (stretches - 1);
  for (std::int64_t n = 0; n < std::min(count, stretches * in_a_row); ++n) {
    const std::int64_t place = n / in_a_row * apart + n % in_a_row;
    const auto word = file.integer(begin + 4 * place, order);
    if (!word) continue;  // the file has become shorter
    words.zero = words.zero && *word == 0;
    words.small = words.small && std::abs(std::int64_t{*word}) <= largest_small;
    if (!words.small) break;
  }
  return words;
}

}  // namespace p3dgrid
