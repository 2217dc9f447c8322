#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

/// Sixteen characters of text at a time. Compilers keep them in one register where the processor
/// has such, as every x86 of 64 bits does, and take smaller steps elsewhere.
namespace mod_p3dgrid::recordio {

inline constexpr int characters_at_once = 16;

using Characters [[gnu::vector_size(characters_at_once)]] = unsigned char;

[[nodiscard]] inline Characters load_characters(const void* text) {
  Characters characters;
  std::memcpy(&characters, text, sizeof characters);
  return characters;
}

namespace detail {

/// What `bits_of` and `number_of` do without a processor's help.
template <class Flags>
[[nodiscard]] std::uint32_t bits_one_by_one(Flags flags) {
  std::uint32_t bits = 0;
  for (int i = 0; i < characters_at_once; ++i) bits |= std::uint32_t{flags[i] != 0} << i;
  return bits;
}
[[nodiscard]] inline std::uint64_t number_one_by_one(Characters digits) {
  std::uint64_t number = 0;
  for (int i = 0; i < characters_at_once; ++i) number = number * 10 + digits[i];
  return number;
}

}  // namespace detail

/// Bit i is set where byte i of `flags` is all ones, clear where it is zero.
template <class Flags>
[[nodiscard]] std::uint32_t bits_of(Flags flags) {
#ifdef __SSE2__
  return static_cast<std::uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(flags)));
#else
  return detail::bits_one_by_one(flags);
#endif
}

/// Finds the first blank, control character or comma of 32 characters. Null if there is none.
[[nodiscard]] inline const char* end_of_word(const char* from) {
  for (int i = 0; i < 2; ++i, from += characters_at_once) {
    const Characters c = load_characters(from);
    const std::uint32_t ends = bits_of((c <= ' ') | (c == ','));
    if (ends != 0) return from + std::countr_zero(ends);
  }
  return nullptr;
}

/// The number that sixteen digits make, given as their values.
[[nodiscard]] inline std::uint64_t number_of(Characters digits) {
#ifdef __SSE2__
  // Pairs, fours and eights of digits are put together side by side.
  using Pairs [[gnu::vector_size(characters_at_once)]] = std::uint16_t;
  const auto bytes = reinterpret_cast<Pairs>(digits);
  const Pairs pairs = (bytes & 0xFF) * 10 + (bytes >> 8);
  const __m128i fours = _mm_madd_epi16(reinterpret_cast<__m128i>(pairs), _mm_set1_epi32(0x1'0064));
  const __m128i eights = _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(0x1'2710));
  const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
  return (both & 0xFFFF'FFFF) * 100'000'000 + (both >> 32);
#else
  return detail::number_one_by_one(digits);
#endif
}

/// Makes a number of the last `count`, 0 to 16, of the sixteen characters in front of `end`. False
/// if they are not all digits.
inline bool take_last_digits(const char* end, std::int64_t count, std::uint64_t& number) {
  // Sixteen bytes that drop a character and sixteen that keep one.
  static constexpr auto kept = [] {
    std::array<unsigned char, 32> bytes{};
    std::fill(bytes.begin() + characters_at_once, bytes.end(), 0xFF);
    return bytes;
  }();
  const Characters digits =
      (load_characters(end - characters_at_once) - '0') & load_characters(kept.data() + count);
  if (bits_of(digits > 9) != 0) return false;
  number = number_of(digits);
  return true;
}

/// Eight digits, the first in the lowest byte, each 0 to 9: halves, quarters and single digits are
/// divided apart side by side.
[[nodiscard]] inline std::uint64_t eight_digits(std::uint32_t number) {
  std::uint64_t parts = number / 10000 | std::uint64_t{number % 10000} << 32;
  const std::uint64_t hundreds = parts * 10486 >> 20 & 0x0000007F'0000007F;
  parts = hundreds | (parts - hundreds * 100) << 16;
  const std::uint64_t tens = parts * 103 >> 10 & 0x000F000F'000F000F;
  return tens | (parts - tens * 10) << 8;
}

/// The first eight of sixteen digits and the others.
using SixteenDigits = std::array<std::uint64_t, 2>;

namespace detail {

[[nodiscard]] inline SixteenDigits digits_eight_by_eight(std::uint64_t number) {
  return {eight_digits(static_cast<std::uint32_t>(number / 100'000'000)),
          eight_digits(static_cast<std::uint32_t>(number % 100'000'000))};
}

}  // namespace detail

/// The digits of a number below 10^16.
[[nodiscard]] inline SixteenDigits sixteen_digits(std::uint64_t number) {
#ifdef __SSE2__
  // The same as in `eight_digits`, for both halves at a time.
  const auto first = static_cast<std::int64_t>(number / 100'000'000);
  const auto others = static_cast<std::int64_t>(number % 100'000'000);
  const __m128i halves = _mm_set_epi64x(others, first);
  const __m128i fours =
      _mm_srli_epi64(_mm_mul_epu32(halves, _mm_set1_epi32(static_cast<int>(3518437209U))), 45);
  const __m128i rests = _mm_sub_epi32(halves, _mm_mul_epu32(fours, _mm_set1_epi32(10000)));
  const __m128i quarters = _mm_or_si128(fours, _mm_slli_epi64(rests, 32));
  const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(quarters, _mm_set1_epi16(5243)), 3);
  const __m128i below = _mm_sub_epi16(quarters, _mm_mullo_epi16(hundreds, _mm_set1_epi16(100)));
  const __m128i pairs = _mm_or_si128(hundreds, _mm_slli_epi32(below, 16));
  const __m128i tens = _mm_srli_epi16(_mm_mullo_epi16(pairs, _mm_set1_epi16(103)), 10);
  const __m128i ones = _mm_sub_epi16(pairs, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
  return std::bit_cast<SixteenDigits>(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)));
#else
  return detail::digits_eight_by_eight(number);
#endif
}

}  // namespace mod_p3dgrid::recordio
