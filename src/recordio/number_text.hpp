#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

#include "mod_p3dgrid/logical.hpp"
#include "recordio/shortest_decimal.hpp"

/// Numbers as text: one token to one value and back.
namespace mod_p3dgrid::recordio {

/// Parses a token. If it is not a number as a whole, returns false and leaves `value` unchanged.
///
/// Reals: optional sign, digits with at most one point, optional exponent with the letter e, d or q
/// or with only its sign (`1.5+3`); `inf`, `infinity`, `nan`, `nan(...)`; in upper or lower case.
/// They are rounded to nearest, to infinity and to zero if out of range. A NaN written by
/// `write_number` keeps its bits.
///
/// Integers: optional sign, digits; the value must fit 32 bits.
[[nodiscard]] bool parse_number(std::string_view token, integer& value);
template <std::floating_point Real>
[[nodiscard]] bool parse_number(std::string_view token, Real& value);

/// A number and its shortest digits, which are meaningless where `shortest_decimal` has none.
template <class Real>
struct NumberWithDigits {
  Real value;
  Decimal digits;
};

/// Computes the digits of a number. Doing this for several numbers before the first is written is
/// faster, because the processor overlaps the computations.
template <class Real>
[[nodiscard]] NumberWithDigits<Real> with_digits(Real value) {
  return {value, shortest_decimal(std::fabs(value))};
}

/// Bytes that `write_number` may overwrite; more than the text, which it writes in fixed lengths.
inline constexpr std::int64_t number_room = 48;

/// Writes the shortest text that `parse_number` converts back to the same bits; returns its end.
/// The format of finite numbers is that of `std::to_chars`.
char* write_number(char* to, integer value);
template <class Real>
char* write_number(char* to, const NumberWithDigits<Real>& number);
template <std::floating_point Real>
char* write_number(char* to, Real value) {
  return write_number(to, with_digits(value));
}

/// `number` right-justified in `width` columns; asterisks if it does not fit.
[[nodiscard]] std::string column(integer number, std::size_t width, char fill = ' ');

}  // namespace mod_p3dgrid::recordio
