#pragma once

#include <cstdint>
#include <string_view>

#include "mod_p3dgrid/logical.hpp"

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

/// Room that `write_number` needs: more than the text, which it writes in pieces of fixed length.
inline constexpr std::int64_t number_room = 48;

/// Writes the shortest text that `parse_number` turns back into the same bits; returns its end.
/// Finite numbers look as `std::to_chars` writes them.
char* write_number(char* to, integer value);
char* write_number(char* to, float value);
char* write_number(char* to, double value);

}  // namespace mod_p3dgrid::recordio
