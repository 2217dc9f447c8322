#pragma once

#include <cstdint>

/// Binary to decimal: the shortest digits that round back to the same bits.
namespace mod_p3dgrid::recordio {

/// The number `digits * 10^exponent`.
struct Decimal {
  std::uint64_t digits;
  int exponent;
};

/// The decimal number with the fewest digits that lies nearer to `value` than to any other number
/// of its type; of several the one nearest to `value`. The digits may end in zeros.
///
/// Follows R. Giulietti, "The Schubfach way to render doubles" (2020): the ends of the interval
/// that rounds to `value` are scaled by a tabulated power of ten to integers of one digit more than
/// needed, which a multiplication does exactly enough.
/// @param value  finite and above 0
[[nodiscard]] Decimal shortest_decimal(float value);
[[nodiscard]] Decimal shortest_decimal(double value);

}  // namespace mod_p3dgrid::recordio
