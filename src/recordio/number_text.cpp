#include "recordio/number_text.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

#include "recordio/characters.hpp"

namespace mod_p3dgrid::recordio {
namespace {

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Removes `word` from the beginning of `text`, ignoring case. False if it does not begin with it.
bool take_word(std::string_view& text, std::string_view word) {
  if (text.size() < word.size()) return false;
  if (!std::equal(word.begin(), word.end(), text.begin(),
                  [](char w, char t) { return w == lower(t); })) {
    return false;
  }
  text.remove_prefix(word.size());
  return true;
}

/// Parses the text that follows `nan`: nothing, or in parentheses the bits, with all hexadecimal
/// digits of the type. Other text in parentheses is ignored. False for anything else.
template <class Real>
bool parse_nan(std::string_view text, bool negative, Real& value) {
  Real result =
      std::copysign(std::numeric_limits<Real>::quiet_NaN(), negative ? Real{-1} : Real{1});
  if (!text.empty()) {
    if (text.size() < 2 || text.front() != '(' || text.back() != ')') return false;
    text = text.substr(1, text.size() - 2);
    BitsOf<Real> bits = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), bits, 16);
    const Real stored = std::bit_cast<Real>(bits);
    if (text.size() == 2 * sizeof(Real) && error == std::errc{} && end == text.end() &&
        std::isnan(stored)) {
      result = stored;
    }
  }
  value = result;
  return true;
}

/// Parses a decimal number without sign, whose exponent begins with `e`.
template <class Real>
bool parse_decimal(std::string_view text, Real& value) {
  const auto [end, error] =
      std::from_chars(text.begin(), text.end(), value, std::chars_format::general);
  if (end != text.end()) return false;
  if (error != std::errc::result_out_of_range) return error == std::errc{};
  // Too large or too small: the power of ten of the first non-zero digit tells which.
  const std::size_t mark = text.find('e');
  const std::string_view digits = text.substr(0, mark);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t first = digits.find_first_of("123456789");
  std::int64_t exponent = 0;
  if (mark != text.npos) {
    std::string_view tail = text.substr(mark + 1);
    const bool negative = tail.front() == '-';
    if (tail.front() == '+') tail.remove_prefix(1);
    if (std::from_chars(tail.begin(), tail.end(), exponent).ec != std::errc{}) {
      exponent = negative ? -(std::int64_t{1} << 40) : std::int64_t{1} << 40;
    }
  }
  exponent += static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  value = exponent > 0 ? std::numeric_limits<Real>::infinity() : Real{0};
  return true;
}

/// The number with its exponent in the form that `std::from_chars` accepts; empty if it is not a
/// number.
std::string with_plain_exponent(std::string_view text) {
  std::string plain;
  plain.reserve(text.size() + 1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = lower(text[i]);
    if (is_digit(c) || c == '.') {
      plain += c;
      continue;
    }
    const bool letter = c == 'e' || c == 'd' || c == 'q';
    if (i == 0 || !(letter || c == '+' || c == '-')) return {};
    plain += 'e';
    const std::string_view exponent = text.substr(letter ? i + 1 : i);
    const bool has_sign = !exponent.empty() && (exponent.front() == '+' || exponent.front() == '-');
    const std::string_view digits = exponent.substr(has_sign ? 1 : 0);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), is_digit)) return {};
    plain += exponent;
    return plain;
  }
  return plain;
}

__extension__ using Wide = unsigned __int128;

/// Stores digits, the first of which is in the lowest byte, as text.
void store(char* to, std::uint64_t digits) {
  digits |= 0x30303030'30303030;
  if constexpr (std::endian::native == std::endian::big) digits = __builtin_bswap64(digits);
  std::memcpy(to, &digits, sizeof digits);
}
void store(char* to, Wide digits) {
  store(to, static_cast<std::uint64_t>(digits));
  store(to + 8, static_cast<std::uint64_t>(digits >> 64));
}

int zeros_at_end(std::uint64_t digits) {
  return std::countl_zero(digits) / 8;
}
int zeros_at_end(Wide digits) {
  const auto last = static_cast<std::uint64_t>(digits >> 64);
  return last != 0 ? zeros_at_end(last) : 8 + zeros_at_end(static_cast<std::uint64_t>(digits));
}

/// The digits of a real without trailing zeros: one digit, and a word with the most that can
/// follow. Their number is unpredictable, hence branch-free.
template <class Real>
class Digits {
 public:
  explicit Digits(Decimal number) : exponent(number.exponent) {
    auto digits = static_cast<Number>(number.digits);
    const Number one_missing = digits < least;
    digits += 9 * digits * one_missing;
    exponent -= static_cast<int>(one_missing);
    for (; digits < least; digits *= 10) --exponent;  // rare
    first_ = static_cast<char>('0' + digits / least);
    others_ = text_of(digits % least);
    const int zeros = zeros_at_end(others_);
    count = 1 + behind_first - zeros;
    exponent += zeros;
  }

  /// Writes the digits from `first` on, followed by unused characters.
  void copy(char* to, int first) const {
    if (first > 0) return store(to, others_ >> 8 * (first - 1));
    *to = first_;
    store(to + 1, others_);
  }

  int count;
  int exponent;  ///< power of ten of the last digit

 private:
  static constexpr bool single = sizeof(Real) == 4;
  using Number = std::conditional_t<single, std::uint32_t, std::uint64_t>;
  using Word = std::conditional_t<single, std::uint64_t, Wide>;
  static constexpr int behind_first = single ? 8 : 16;
  static constexpr auto least = static_cast<Number>(single ? 100'000'000 : 10'000'000'000'000'000);

  static std::uint64_t text_of(std::uint32_t digits) { return eight_digits(digits); }
  static Wide text_of(std::uint64_t digits) {
    const auto [front, back] = sixteen_digits(digits);
    return Wide{back} << 64 | front;
  }

  char first_;
  Word others_;
};

char* write_exponent(char* to, int exponent) {
  *to++ = 'e';
  *to++ = exponent < 0 ? '-' : '+';
  const int magnitude = std::abs(exponent);
  if (magnitude >= 100) *to++ = static_cast<char>('0' + magnitude / 100);
  *to++ = static_cast<char>('0' + magnitude / 10 % 10);
  *to++ = static_cast<char>('0' + magnitude % 10);
  return to;
}

/// Writes the number with a point or with an exponent, whichever is shorter. Null for a whole
/// number that needs more digits than `digits` has.
template <class Real>
char* write_decimal(char* to, const Digits<Real>& digits) {
  const int count = digits.count;
  const int exponent = digits.exponent;
  const int before_point = count + exponent;
  // "1.5e-07" has five characters besides its digits; without a point it has four.
  const int besides = count == 1 ? 4 : 5;
  if (exponent > besides || 2 - exponent > count + besides) {
    digits.copy(to + 1, 0);
    to[0] = to[1];
    to[1] = '.';
    return write_exponent(count == 1 ? to + 1 : to + count + 1, before_point - 1);
  }
  if (exponent > 0) return nullptr;
  if (before_point <= 0) {
    std::memcpy(to, "0.000000", 8);
    to += 2 - before_point;
    digits.copy(to, 0);
    return to + count;
  }
  digits.copy(to, 0);
  if (exponent == 0) return to + count;
  to[before_point] = '.';
  digits.copy(to + before_point + 1, before_point);
  return to + count + 1;
}

template <class Real>
char* write_nan(char* to, Real value) {
  const auto bits = std::bit_cast<BitsOf<Real>>(value);
  std::memcpy(to, "NaN", 3);
  to += 3;
  if (bits == std::bit_cast<BitsOf<Real>>(std::numeric_limits<Real>::quiet_NaN())) return to;
  *to++ = '(';
  to = std::to_chars(to, to + 2 * sizeof(Real), bits, 16).ptr;
  *to++ = ')';
  return to;
}

}  // namespace

bool parse_number(std::string_view token, integer& value) {
  if (token.size() > 1 && token.front() == '+' && is_digit(token[1])) token.remove_prefix(1);
  integer result = 0;
  const auto [end, error] = std::from_chars(token.begin(), token.end(), result);
  if (error != std::errc{} || end != token.end()) return false;
  value = result;
  return true;
}

template <std::floating_point Real>
bool parse_number(std::string_view token, Real& value) {
  bool negative = false;
  if (!token.empty() && (token.front() == '+' || token.front() == '-')) {
    negative = token.front() == '-';
    token.remove_prefix(1);
  }
  std::string_view word = token;
  if (take_word(word, "nan")) return parse_nan(word, negative, value);
  Real magnitude = 0;
  if (take_word(word, "inf")) {
    if (!word.empty() && !(take_word(word, "inity") && word.empty())) return false;
    magnitude = std::numeric_limits<Real>::infinity();
  } else if (const std::string plain = with_plain_exponent(token);
             plain.empty() || !parse_decimal(std::string_view(plain), magnitude)) {
    return false;
  }
  value = negative ? -magnitude : magnitude;
  return true;
}
template bool parse_number(std::string_view, float&);
template bool parse_number(std::string_view, double&);

char* write_number(char* to, integer value) {
  return std::to_chars(to, to + number_room, value).ptr;
}

template <class Real>
char* write_number(char* to, const NumberWithDigits<Real>& number) {
  const Real value = number.value;
  using Bits = BitsOf<Real>;
  constexpr Bits fraction = (Bits{1} << (std::numeric_limits<Real>::digits - 1)) - 1;
  if (std::isnan(value)) return write_nan(to, value);
  *to = '-';
  to += std::signbit(value);
  const Real magnitude = std::fabs(value);
  if ((std::bit_cast<Bits>(value) & fraction) != 0) {
    if (char* const end = write_decimal(to, Digits<Real>(number.digits))) return end;
  }
  // Zero, infinity, powers of two, and whole numbers with more digits than their shortest ones.
  return std::to_chars(to, to + number_room, magnitude).ptr;
}
template char* write_number(char*, const NumberWithDigits<float>&);
template char* write_number(char*, const NumberWithDigits<double>&);

std::string column(integer number, std::size_t width, char fill) {
  const std::string digits = std::to_string(number);
  if (digits.size() > width) return std::string(width, '*');
  return std::string(width - digits.size(), fill) + digits;
}

}  // namespace mod_p3dgrid::recordio
