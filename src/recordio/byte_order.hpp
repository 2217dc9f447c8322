#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

namespace mod_p3dgrid::recordio {

/// Whether values must be turned around between a file of this order and memory.
[[nodiscard]] constexpr bool is_foreign(std::endian order) {
  return order != std::endian::native;
}

/// Turns the bytes of each value around. The loop becomes shuffles of many values at a time.
template <class T>
void reverse_bytes(T* values, std::int64_t count) {
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  static_assert(sizeof(T) == sizeof(Word));
  for (std::int64_t i = 0; i < count; ++i) {
    auto word = std::bit_cast<Word>(values[i]);
    if constexpr (sizeof(T) == 8) {
      word = __builtin_bswap64(word);
    } else {
      word = __builtin_bswap32(word);
    }
    values[i] = std::bit_cast<T>(word);
  }
}

}  // namespace mod_p3dgrid::recordio
