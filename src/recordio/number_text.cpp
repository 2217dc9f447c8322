#include "recordio/number_text.hpp"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

namespace mod_p3dgrid::recordio {
namespace {

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether `text` in lower case begins with `word`; if so, drops the word from it.
bool take_word(std::string_view& text, std::string_view word) {
  if (text.size() < word.size()) return false;
  if (!std::equal(word.begin(), word.end(), text.begin(),
                  [](char w, char t) { return w == lower(t); })) {
    return false;
  }
  text.remove_prefix(word.size());
  return true;
}

/// The NaN that `text`, what follows the word nan, stands for: a quiet one, or in parentheses the
/// bits as as many hexadecimal digits as the type has. Other texts in parentheses say nothing.
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

/// A decimal number without sign, its exponent marked by `e` alone.
template <class Real>
bool parse_decimal(std::string_view text, Real& value) {
  const auto [end, error] =
      std::from_chars(text.begin(), text.end(), value, std::chars_format::general);
  if (end != text.end()) return false;
  if (error != std::errc::result_out_of_range) return error == std::errc{};
  // Beyond the range on either side: the place of the first digit that counts tells which.
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

/// The number with its exponent in the one form that `std::from_chars` knows; empty if it is none.
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

template <class Real>
bool parse_real(std::string_view token, Real& value) {
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

template <class Real>
char* write_real(char* to, Real value) {
  if (!std::isnan(value)) return std::to_chars(to, to + longest_number, value).ptr;
  const auto bits = std::bit_cast<BitsOf<Real>>(value);
  std::memcpy(to, "NaN", 3);
  to += 3;
  if (bits == std::bit_cast<BitsOf<Real>>(std::numeric_limits<Real>::quiet_NaN())) return to;
  *to++ = '(';
  // A NaN's bits fill all digits of its type, less a sign bit of 0 in the first.
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

bool parse_number(std::string_view token, float& value) {
  return parse_real(token, value);
}
bool parse_number(std::string_view token, double& value) {
  return parse_real(token, value);
}

char* write_number(char* to, integer value) {
  return std::to_chars(to, to + longest_number, value).ptr;
}
char* write_number(char* to, float value) {
  return write_real(to, value);
}
char* write_number(char* to, double value) {
  return write_real(to, value);
}

}  // namespace mod_p3dgrid::recordio
