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

/// The fast path for numbers in their usual forms, straight from a file's buffer. What it does not
/// take is read by `parse_number`; what it takes has the same value.
///
/// The text must go on behind the number: with a zero byte behind what is valid, and with 16 bytes
/// in front of it and 32 behind it that may be looked at.
namespace mod_p3dgrid::recordio {
namespace detail {

/// A number as its text has it: `digits * 10^exponent`.
struct ScannedDecimal {
  std::uint64_t digits = 0;
  std::int64_t exponent = 0;
  std::uint64_t negative = 0;  ///< 1 if it is
};

/// More digits might not fit.
inline constexpr std::uint64_t most_digits = 18;

inline bool is_digit(char c) {
  return static_cast<unsigned char>(c - '0') <= 9;
}

inline void append_digit(std::uint64_t& digits, char digit) {
  digits = digits * 10 + static_cast<std::uint64_t>(digit - '0');
}

constexpr std::array<std::uint64_t, characters_at_once + 1> make_whole_powers() {
  std::array<std::uint64_t, characters_at_once + 1> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}

/// Powers of ten up to that of as many digits as are taken at once.
inline constexpr auto whole_powers = make_whole_powers();

/// Takes a sign and digits with or without a point, up to `end`. False if they look otherwise.
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

/// Takes the exponent that ends at `end` if there is one of a letter, a sign and two digits, and
/// moves `end` in front of it. False if it looks otherwise.
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

/// Takes an exponent of a letter, a sign or none, and one to four digits. False if there is none.
/// Looks backwards from the end, no further than an exponent is long. `take_digits` refuses what
/// has its exponent in front of where it begins.
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

/// What `scan_decimal` does not see in most files. Returned by value, so that the usual number can
/// stay in registers.
[[gnu::noinline]] inline std::optional<ScannedDecimal> scan_with_other_exponent(const char* from,
                                                                                const char* end) {
  ScannedDecimal number;
  if (!take_exponent(end, number.exponent) || !take_digits(from, end, number)) return {};
  return number;
}

/// Takes a number of digits with or without a point, and an exponent with a letter. Where it ends
/// is found first, so that what follows need not wait for its digits. Null if it looks otherwise.
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

/// Powers of ten that doubles hold exactly.
inline constexpr std::array<double, 23> exact_powers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

inline constexpr std::int64_t greatest_exact_power = exact_powers.size() - 1;

constexpr std::array<double, 2 * greatest_exact_power + 1> make_near_powers() {
  std::array<double, 2 * greatest_exact_power + 1> powers{};
  for (std::size_t i = 0; i < exact_powers.size(); ++i) {
    powers[greatest_exact_power + i] = exact_powers[i];
    powers[greatest_exact_power - i] = 1 / exact_powers[i];
  }
  return powers;
}

/// The same and their reciprocals, as near as doubles come: `near_powers[greatest_exact_power + e]`
/// is the one of e.
inline constexpr auto near_powers = make_near_powers();

/// With the number's sign.
template <class Real>
Real signed_value(const ScannedDecimal& number, double magnitude) {
  const auto bits = std::bit_cast<std::uint64_t>(magnitude) | number.negative << 63;
  return static_cast<Real>(std::bit_cast<double>(bits));
}

/// Rounds as IEEE arithmetic does. False where that is not certain to be right.
inline bool round_decimal(const ScannedDecimal& number, float& value) {
  const auto power = static_cast<std::uint64_t>(number.exponent + greatest_exact_power);
  if (power >= near_powers.size()) return false;
  const double magnitude =
      static_cast<double>(static_cast<std::int64_t>(number.digits)) * near_powers[power];
  // At most three roundings, which put the double off by less than four of its last places.
  // Rounding once more is right unless the border between two singles lies as near.
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
  // Where both operands are exact, the one rounding is right.
  if (power >= exact_powers.size() || number.digits > std::uint64_t{1} << 53) return false;
  const auto digits = static_cast<double>(static_cast<std::int64_t>(number.digits));
  value = signed_value<double>(
      number, number.exponent < 0 ? digits / exact_powers[power] : digits * exact_powers[power]);
  return true;
}

/// Longer ones are left to the caller, who knows how long a number may be. One that is cut off here
/// ends at a character that ends no number.
inline constexpr std::ptrdiff_t most_characters = 64;

/// Takes what else is a number. Separate, since it is rarely wanted.
template <class Real>
[[gnu::noinline]] const char* parse_unusual(const char* from, const char* end, Real& value) {
  // Letters, behind a sign too, are infinities and NaNs.
  const char* const first = *from == '-' && from + 1 != end ? from + 1 : from;
  if (*first > '9') return nullptr;
  const auto [last, error] = std::from_chars(from, std::min(end, from + most_characters), value);
  return error == std::errc{} ? last : nullptr;
}

}  // namespace detail

/// Reads a real that begins at `from`; returns where it ends, or null if it is not for the fast
/// path. `end` is where the valid text ends.
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

/// Goes over a number that is not kept: checks it, and makes no value.
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
