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
/// of its type; of several the one nearest to `value`. The digits may end in zeros; those of a
/// single are below 10^9.
///
/// Follows J. Jeon, "Dragonbox: a new floating-point binary-to-decimal conversion algorithm"
/// (2020): of the interval that rounds to `value` one end is scaled by a tabulated power of ten;
/// its integer part tells all but the rare cases, in which the other end or the middle is looked
/// at.
/// @param value  finite, above 0 and no power of two, whose neighbours lie at two distances; of any
///               other the digits say nothing
[[nodiscard]] Decimal shortest_decimal(float value);
[[nodiscard]] Decimal shortest_decimal(double value);

}  // namespace mod_p3dgrid::recordio
