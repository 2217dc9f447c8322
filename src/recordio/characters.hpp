#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

/// Text in vectors of sixteen characters, with SSE2 where it is available.
namespace mod_p3dgrid::recordio {

inline bool is_digit(char c) {
  return static_cast<unsigned char>(c - '0') <= 9;
}

inline constexpr int characters_at_once = 16;

using Characters [[gnu::vector_size(characters_at_once)]] = unsigned char;

[[nodiscard]] inline Characters load_characters(const void* text) {
  Characters characters;
  std::memcpy(&characters, text, sizeof characters);
  return characters;
}

namespace detail {

/// `bits_of` and `number_of` without SSE2.
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

/// The number with these sixteen digits, each 0 to 9.
[[nodiscard]] inline std::uint64_t number_of(Characters digits) {
#ifdef __SSE2__
  // Combines digits to numbers of two, four and eight digits in parallel.
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

/// Parses the last `count` characters before `end`, 0 to 16 of them, of which 16 must be readable.
/// False if they are not all digits.
inline bool take_last_digits(const char* end, std::int64_t count, std::uint64_t& number) {
  // A mask for each count: sixteen bytes that clear a character, then sixteen that keep one.
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

/// Splits a number below 10^8 into eight digits, each 0 to 9, the first in the lowest byte. Each
/// step divides all parts in parallel.
[[nodiscard]] inline std::uint64_t eight_digits(std::uint32_t number) {
  std::uint64_t parts = number / 10000 | std::uint64_t{number % 10000} << 32;
  const std::uint64_t hundreds = parts * 10486 >> 20 & 0x0000007F'0000007F;
  parts = hundreds | (parts - hundreds * 100) << 16;
  const std::uint64_t tens = parts * 103 >> 10 & 0x000F000F'000F000F;
  return tens | (parts - tens * 10) << 8;
}

/// Sixteen digits as two words of `eight_digits`, the first word first.
using SixteenDigits = std::array<std::uint64_t, 2>;

namespace detail {

/// `sixteen_digits` without SSE2.
[[nodiscard]] inline SixteenDigits digits_eight_by_eight(std::uint64_t number) {
  return {eight_digits(static_cast<std::uint32_t>(number / 100'000'000)),
          eight_digits(static_cast<std::uint32_t>(number % 100'000'000))};
}

}  // namespace detail

/// The digits of a number below 10^16.
[[nodiscard]] inline SixteenDigits sixteen_digits(std::uint64_t number) {
#ifdef __SSE2__
  // `eight_digits` of both halves in parallel.
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
