#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>
#include <type_traits>

#include "mod_p3dgrid/logical.hpp"
#include "recordio/characters.hpp"

/// Fast parser for numbers in the usual forms. It returns the same values as `parse_number`, and
/// null for numbers that it does not handle.
///
/// A zero byte must follow the valid text, and 16 bytes before the number and 32 after it must be
/// readable.
namespace mod_p3dgrid::recordio {
namespace detail {

/// The number `digits * 10^exponent`.
struct ScannedDecimal {
  std::uint64_t digits = 0;
  std::int64_t exponent = 0;
  std::uint64_t negative = 0;  ///< 1 if it is
};

/// Limit on digits, so that they fit 64 bits.
inline constexpr std::uint64_t most_digits = 18;

inline void append_digit(std::uint64_t& digits, char digit) {
  digits = digits * 10 + static_cast<std::uint64_t>(digit - '0');
}

/// Powers of ten for up to `characters_at_once` digits.
inline constexpr auto whole_powers = [] {
  std::array<std::uint64_t, characters_at_once + 1> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// Parses a sign and digits with at most one point, up to `end`. False for other text.
inline bool take_digits(const char* from, const char* end, ScannedDecimal& number) {
  number.negative = *from == '-';
  from += number.negative | static_cast<std::uint64_t>(*from == '+');
  const char* point = from;
  for (; is_digit(*point); ++point) append_digit(number.digits, *point);
  const char* fraction = point + (*point == '.');
  std::int64_t places = end - fraction;
  const std::int64_t count = point - from + places;
  if (places < 0 || static_cast<std::uint64_t>(count - 1) >= most_digits) return false;
  number.exponent -= places;
  for (; places > characters_at_once; --places, ++fraction) {
    if (!is_digit(*fraction)) return false;
    append_digit(number.digits, *fraction);
  }
  std::uint64_t last;
  if (!take_last_digits(end, places, last)) return false;
  number.digits = number.digits * whole_powers[static_cast<std::size_t>(places)] + last;
  return true;
}

/// Parses an exponent of a letter, a sign and two digits that ends at `end`, and moves `end` to its
/// beginning. True without an exponent, false for one of another form.
inline bool take_usual_exponent(const char*& end, std::int64_t& exponent) {
  constexpr int but_case_and_last_bit = 0xDE;
  if ((end[-4] & but_case_and_last_bit) != ('D' & 'E')) return true;
  const char sign = end[-3];
  if ((sign != '-' && sign != '+') || !is_digit(end[-2]) || !is_digit(end[-1])) return false;
  const int magnitude = (end[-2] - '0') * 10 + (end[-1] - '0');
  exponent = sign == '-' ? -magnitude : magnitude;
  end -= 4;
  return true;
}

/// Parses an exponent of a letter, an optional sign and one to four digits that ends at `end`, and
/// moves `end` to its beginning. False if there is none. If it begins before the number,
/// `take_digits` fails.
inline bool take_exponent(const char*& end, std::int64_t& exponent) {
  constexpr std::ptrdiff_t most = 4;
  const char* first = end;
  while (end - first < most && is_digit(first[-1])) --first;
  const bool negative = first[-1] == '-';
  const char* const letter = first - 1 - (negative || first[-1] == '+');
  const int lower = *letter | 0x20;
  if (first == end || (lower != 'e' && lower != 'd' && lower != 'q')) return false;
  std::uint64_t magnitude = 0;
  for (; first != end; ++first) append_digit(magnitude, *first);
  exponent = static_cast<std::int64_t>(magnitude) * (negative ? -1 : 1);
  end = letter;
  return true;
}

/// The rare case of `scan_decimal`. Returns by value, so that the usual number stays in registers.
[[gnu::noinline]] inline std::optional<ScannedDecimal> scan_with_other_exponent(const char* from,
                                                                                const char* end) {
  ScannedDecimal number;
  if (!take_exponent(end, number.exponent) || !take_digits(from, end, number)) return {};
  return number;
}

/// Parses digits with at most one point, and an exponent with a letter. The end of the number is
/// found first, so that the next number need not wait for its digits. Null for other text.
inline const char* scan_decimal(const char* from, ScannedDecimal& number) {
  const char* const end = end_of_word(from);
  if (end == nullptr) return nullptr;
  const char* digits_end = end;
  if (take_usual_exponent(digits_end, number.exponent) && take_digits(from, digits_end, number)) {
    return end;
  }
  const std::optional<ScannedDecimal> other = scan_with_other_exponent(from, end);
  if (!other) return nullptr;
  number = *other;
  return end;
}

/// The greatest power of ten that is exact in double precision.
inline constexpr std::int64_t greatest_exact_power = 22;

/// Element `greatest_exact_power + e` is 10^e, rounded if e is below 0.
inline constexpr auto near_powers = [] {
  std::array<double, 2 * greatest_exact_power + 1> powers{};
  double power = 1;
  for (std::size_t i = 0; i <= greatest_exact_power; ++i, power *= 10) {
    powers[greatest_exact_power + i] = power;
    powers[greatest_exact_power - i] = 1 / power;
  }
  return powers;
}();

template <class Real>
Real signed_value(const ScannedDecimal& number, double magnitude) {
  const auto bits = std::bit_cast<std::uint64_t>(magnitude) | number.negative << 63;
  return static_cast<Real>(std::bit_cast<double>(bits));
}

/// Rounds to nearest. False if the result is not certain to be correct.
inline bool round_decimal(const ScannedDecimal& number, float& value) {
  const auto power = static_cast<std::uint64_t>(number.exponent + greatest_exact_power);
  if (power >= near_powers.size()) return false;
  const double magnitude =
      static_cast<double>(static_cast<std::int64_t>(number.digits)) * near_powers[power];
  // The double has an error of less than four units in the last place, from three roundings at
  // most. Rounding it is correct unless the midpoint between two singles is that close.
  constexpr std::uint64_t below_single = (std::uint64_t{1} << 29) - 1;
  constexpr std::uint64_t border = std::uint64_t{1} << 28;
  constexpr std::uint64_t doubt = 4;
  const std::uint64_t place = std::bit_cast<std::uint64_t>(magnitude) & below_single;
  if (place - (border - doubt) <= 2 * doubt) return false;
  value = signed_value<float>(number, magnitude);
  return true;
}

inline bool round_decimal(const ScannedDecimal& number, double& value) {
  const auto power =
      static_cast<std::uint64_t>(number.exponent < 0 ? -number.exponent : number.exponent);
  // With exact operands the only rounding is correct.
  if (power > greatest_exact_power || number.digits > std::uint64_t{1} << 53) return false;
  const auto digits = static_cast<double>(static_cast<std::int64_t>(number.digits));
  const double factor = near_powers[greatest_exact_power + power];
  value = signed_value<double>(number, number.exponent < 0 ? digits / factor : digits * factor);
  return true;
}

/// Limit for `parse_unusual`. Longer numbers end at a digit here, and are left to `parse_number`.
inline constexpr std::ptrdiff_t most_characters = 64;

/// Parses other numbers. Not inline, because it is rarely called.
template <class Real>
[[gnu::noinline]] const char* parse_unusual(const char* from, const char* end, Real& value) {
  // Letters begin infinities and NaNs, which are left to `parse_number`.
  const char* const first = *from == '-' && from + 1 != end ? from + 1 : from;
  if (*first > '9') return nullptr;
  const auto [last, error] = std::from_chars(from, std::min(end, from + most_characters), value);
  return error == std::errc{} ? last : nullptr;
}

}  // namespace detail

/// Parses a real at `from`. Returns its end, or null if it is not for the fast path.
/// @param end  end of the valid text
template <class Real>
const char* parse_plain(const char* from, const char* end, Real& value) {
  detail::ScannedDecimal number;
  const char* const stop = detail::scan_decimal(from, number);
  if (stop != nullptr && detail::round_decimal(number, value)) return stop;
  return detail::parse_unusual(from, end, value);
}

/// The same for an integer.
inline const char* parse_plain(const char* from, const char* end, integer& value) {
  const auto [stop, error] = std::from_chars(from, end, value);
  return error == std::errc{} ? stop : nullptr;
}

/// The same without computing the value.
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
