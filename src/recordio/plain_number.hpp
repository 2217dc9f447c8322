#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <system_error>
#include <type_traits>

#include "mod_p3dgrid/logical.hpp"

/// The fast path for numbers in their usual forms, straight from a file's buffer. What it does not
/// take is read by `parse_number`; what it takes has the same value.
///
/// The text must go on behind the number: eight bytes behind any byte looked at must be readable,
/// and a byte that is no digit must follow before the end of what is valid.
namespace mod_p3dgrid::recordio {
namespace detail {

/// A number as its text has it: `digits * 10^exponent`.
struct ScannedDecimal {
  std::uint64_t digits = 0;
  std::int64_t exponent = 0;
  bool negative = false;
};

/// More digits might not fit.
inline constexpr std::int64_t most_digits = 18;

/// Takes digits one by one: the quicker way for the one or two before a point or in an exponent.
inline const char* take_few_digits(const char* from, std::uint64_t& digits) {
  for (;; ++from) {
    const auto digit = static_cast<unsigned char>(*from - '0');
    if (digit > 9) return from;
    digits = digits * 10 + digit;
  }
}

/// Takes digits, up to eight at a time and without a jump on how many there are.
inline const char* take_digits(const char* from, std::uint64_t& digits) {
  static constexpr std::array<std::uint64_t, 9> powers{1,      10,      100,      1000,     10000,
                                                       100000, 1000000, 10000000, 100000000};
  for (;;) {
    std::uint64_t text;
    std::memcpy(&text, from, sizeof text);
    if constexpr (std::endian::native == std::endian::big) text = __builtin_bswap64(text);
    // A digit's byte becomes its value, any other at least 10; the first of those ends the digits.
    std::uint64_t values = text ^ 0x30303030'30303030;
    const std::uint64_t others = ((values + 0x76767676'76767676) | values) & 0x80808080'80808080;
    const int count = std::countr_zero(others) / 8;
    if (count == 0) return from;
    // Zeros in front, then pairs, fours and eights of digits are put together side by side.
    values <<= 64 - 8 * count;
    values = values * 10 + (values >> 8);
    values = ((values & 0x000000FF'000000FF) * 0x000F4240'00000064 +
              (values >> 16 & 0x000000FF'000000FF) * 0x00002710'00000001) >>
             32;
    digits = digits * powers[static_cast<std::size_t>(count)] + values;
    from += count;
    if (static_cast<unsigned char>(*from - '0') > 9) return from;
  }
}

/// Takes what follows the letter of an exponent. Null if that is none.
inline const char* scan_exponent(const char* from, std::int64_t& exponent) {
  constexpr std::int64_t most = 4;
  const bool negative = *from == '-';
  from += negative || *from == '+';
  std::uint64_t magnitude = 0;
  const char* const end = take_few_digits(from, magnitude);
  if (end == from || end - from > most) return nullptr;
  exponent +=
      negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
  return end;
}

/// Takes sign, digits with or without a point, and an exponent with a letter. Null if there is no
/// digit, or more than can be told.
inline const char* scan_decimal(const char* from, ScannedDecimal& number) {
  number.negative = *from == '-';
  from += number.negative || *from == '+';
  const char* const first = from;
  from = take_few_digits(from, number.digits);
  std::int64_t count = from - first;
  if (*from == '.') {
    const char* const fraction = ++from;
    from = take_digits(from, number.digits);
    number.exponent = fraction - from;
    count -= number.exponent;
  }
  if (count == 0 || count > most_digits) return nullptr;
  const int letter = *from | 0x20;
  const bool has_exponent = letter == 'e' || letter == 'd' || letter == 'q';
  return has_exponent ? scan_exponent(from + 1, number.exponent) : from;
}

/// Powers of ten that doubles hold exactly.
inline constexpr std::array<double, 23> exact_powers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Rounds as IEEE arithmetic does. False where that is not certain to be right.
template <class Real>
bool round_decimal(const ScannedDecimal& number, Real& value) {
  const auto power =
      static_cast<std::uint64_t>(number.exponent < 0 ? -number.exponent : number.exponent);
  if (power >= exact_powers.size()) return false;
  const auto digits = static_cast<double>(static_cast<std::int64_t>(number.digits));
  const double magnitude =
      number.exponent < 0 ? digits / exact_powers[power] : digits * exact_powers[power];
  if constexpr (std::is_same_v<Real, double>) {
    // Both operands are exact, so the one rounding is right.
    if (number.digits > std::uint64_t{1} << 53) return false;
  } else {
    // At most two roundings, which put the double off by less than two of its last places. Rounding
    // once more is right unless the border between two singles lies as near.
    constexpr std::uint64_t below_single = (std::uint64_t{1} << 29) - 1;
    constexpr std::uint64_t border = std::uint64_t{1} << 28;
    constexpr std::uint64_t doubt = 4;
    const std::uint64_t place = std::bit_cast<std::uint64_t>(magnitude) & below_single;
    if (place - (border - doubt) <= 2 * doubt) return false;
  }
  value = static_cast<Real>(number.negative ? -magnitude : magnitude);
  return true;
}

}  // namespace detail

/// Reads a real that begins at `from`; returns where it ends, or null if it is not for the fast
/// path. `end` is where the valid text ends.
template <class Real>
const char* parse_plain(const char* from, const char* end, Real& value) {
  detail::ScannedDecimal number;
  const char* const stop = detail::scan_decimal(from, number);
  if (stop != nullptr && detail::round_decimal(number, value)) return stop;
  // Letters, behind a sign too, are infinities and NaNs.
  const char* const first = *from == '-' && from + 1 != end ? from + 1 : from;
  if (*first > '9') return nullptr;
  const auto [last, error] = std::from_chars(from, end, value);
  return error == std::errc{} ? last : nullptr;
}

/// The same for an integer.
inline const char* parse_plain(const char* from, const char* end, integer& value) {
  const auto [stop, error] = std::from_chars(from, end, value);
  return error == std::errc{} ? stop : nullptr;
}

/// Goes over a number that is not kept.
template <class Number>
const char* skip_plain(const char* from, const char* end) {
  if constexpr (std::is_same_v<Number, integer>) {
    integer dropped;
    return parse_plain(from, end, dropped);
  } else {
    detail::ScannedDecimal dropped;
    return detail::scan_decimal(from, dropped);
  }
}

}  // namespace mod_p3dgrid::recordio
