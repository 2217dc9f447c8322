#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

namespace mod_p3dgrid::recordio {

/// Whether values of this order must be byte-swapped in memory.
[[nodiscard]] constexpr bool needs_swap(std::endian order) {
  return order != std::endian::native;
}

/// Byte-swaps each value. Compilers vectorise the loop.
template <class T>
void swap_bytes(T* values, std::int64_t count) {
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  static_assert(sizeof(T) == sizeof(Word));
  for (std::int64_t i = 0; i < count; ++i) {
    const auto word = std::bit_cast<Word>(values[i]);
    if constexpr (sizeof(T) == 8) {
      values[i] = std::bit_cast<T>(__builtin_bswap64(word));
    } else {
      values[i] = std::bit_cast<T>(__builtin_bswap32(word));
    }
  }
}

}  // namespace mod_p3dgrid::recordio
