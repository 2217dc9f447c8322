#pragma once

#include <cstdint>
#include <string_view>

#include "mod_p3dgrid/logical.hpp"
#include "recordio/shortest_decimal.hpp"

/// Numbers as text: one token to one value and back.
namespace mod_p3dgrid::recordio {

/// Reads a whole token as a number. False if it is not wholly one, `value` untouched then.
///
/// Reals: sign or none, digits with at most one point, an exponent with the letter e, d or q or
/// with its sign alone (`1.5+3`), in either case; `inf`, `infinity`, `nan`, `nan(...)`. Rounded to
/// nearest; what is too large becomes infinite, what is too small zero, as rounding has it. A NaN
/// written by `write_number` keeps its bits.
///
/// Integers: sign or none, digits; the value must fit 32 bits.
[[nodiscard]] bool parse_number(std::string_view token, integer& value);
[[nodiscard]] bool parse_number(std::string_view token, float& value);
[[nodiscard]] bool parse_number(std::string_view token, double& value);

/// A number and its shortest digits, which say nothing if `shortest_decimal` has none for it.
template <class Real>
struct NumberWithDigits {
  Real value;
  Decimal digits;
};

/// Finds the digits that a number is written with. Many numbers take less time if the digits of
/// several are found before the first is written, since a processor works at more than one then.
[[nodiscard]] NumberWithDigits<float> with_digits(float value);
[[nodiscard]] NumberWithDigits<double> with_digits(double value);

/// Room that `write_number` needs: more than the text, which it writes in pieces of fixed length.
inline constexpr std::int64_t number_room = 48;

/// Writes the shortest text that `parse_number` turns back into the same bits; returns its end.
/// Finite numbers look as `std::to_chars` writes them.
char* write_number(char* to, integer value);
char* write_number(char* to, const NumberWithDigits<float>& number);
char* write_number(char* to, const NumberWithDigits<double>& number);

inline char* write_number(char* to, float value) {
  return write_number(to, with_digits(value));
}
inline char* write_number(char* to, double value) {
  return write_number(to, with_digits(value));
}

}  // namespace mod_p3dgrid::recordio
