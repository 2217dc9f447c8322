#pragma once

#include <cstdint>

/// Binary to decimal: the shortest digits that round back to the same bits.
namespace mod_p3dgrid::recordio {

/// The number `digits * 10^exponent`.
struct Decimal {
  std::uint64_t digits;
  int exponent;
};

/// The decimal number with the fewest digits that rounds to `value`; of several the nearest one.
/// The digits may end in zeros; those of a single are below 10^9.
///
/// Follows J. Jeon, "Dragonbox: a new floating-point binary-to-decimal conversion algorithm"
/// (2020): the upper end of the interval that rounds to `value` is scaled by a tabulated power of
/// ten. Its integer part is enough except in rare cases, which need the other end or the middle.
/// @param value  finite, above 0 and not a power of two, whose neighbours have different distances;
///               the result for others is meaningless
[[nodiscard]] Decimal shortest_decimal(float value);
[[nodiscard]] Decimal shortest_decimal(double value);

}  // namespace mod_p3dgrid::recordio
