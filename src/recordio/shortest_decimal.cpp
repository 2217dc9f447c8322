#include "recordio/shortest_decimal.hpp"

#include <bit>
#include <limits>
#include <type_traits>

#include "recordio/powers_of_ten.hpp"

namespace mod_p3dgrid::recordio {
namespace {

__extension__ using Wide = unsigned __int128;

[[nodiscard]] const PowerOfTen& power_of_ten(int exponent) {
  return powers_of_ten[static_cast<std::size_t>(exponent - least_power)];
}

/// floor(log2(10^e)), floor(log10(2^e)) and floor(log10(3/4 * 2^e)), for all exponents of doubles.
constexpr int log2_of_power_of_ten(int e) {
  return (e * 1741647) >> 19;
}
constexpr int log10_of_power_of_two(int e) {
  return (e * 1262611) >> 22;
}
constexpr int log10_of_three_quarters(int e) {
  return (e * 1262611 - 524031) >> 22;
}

/// The integer part of `factor` times a power of ten, with its lowest bit set if the fraction is
/// not (nearly) zero: enough to compare it with integers.
std::uint32_t scaled(const PowerOfTen& power, std::uint32_t factor) {
  // 64 bits of the power suffice here, rounded up like all of it.
  const Wide product = Wide{power.high + (power.low != 0)} * factor;
  const auto fraction = static_cast<std::uint32_t>(product >> 32);
  return static_cast<std::uint32_t>(product >> 64) | (fraction > 1);
}
std::uint64_t scaled(const PowerOfTen& power, std::uint64_t factor) {
  const Wide product = Wide{power.high} * factor + (Wide{power.low} * factor >> 64);
  return static_cast<std::uint64_t>(product >> 64) | (static_cast<std::uint64_t>(product) > 1);
}

template <class Real>
Decimal shortest(Real value) {
  using Word = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;
  constexpr int fraction_bits = std::numeric_limits<Real>::digits - 1;
  constexpr int bias = std::numeric_limits<Real>::max_exponent - 1 + fraction_bits;

  // The value is c * 2^q.
  const auto bits = std::bit_cast<Word>(value);
  const Word fraction = bits & ((Word{1} << fraction_bits) - 1);
  const int biased = static_cast<int>(bits >> fraction_bits);
  const Word c = biased == 0 ? fraction : fraction | Word{1} << fraction_bits;
  const int q = (biased == 0 ? 1 : biased) - bias;
  if (q <= 0 && q > -std::numeric_limits<Real>::digits && c % (Word{1} << -q) == 0) {
    return {c >> -q, 0};
  }

  // In quarters of the last place: the value, and the ends of what rounds to it. Below a power of
  // two numbers lie closer to each other. The ends themselves round to even.
  const bool near_below = fraction == 0 && biased > 1;
  const Word open = c & 1;
  const int k = near_below ? log10_of_three_quarters(q) : log10_of_power_of_two(q);
  const int shift = q + log2_of_power_of_ten(-k) + 1;
  const PowerOfTen& power = power_of_ten(-k);
  const Word middle = scaled(power, Word{4 * c} << shift);
  const Word lower = scaled(power, Word{4 * c - 2 + near_below} << shift) + open;
  const Word upper = scaled(power, Word{4 * c + 2} << shift) - open;

  // The two neighbours with as many digits as may be needed: the one inside, or if both or neither
  // are, the nearer, of two as near the even one. Which it is, is anybody's guess: all of it is
  // worked out without a jump.
  const Word s = middle / 4;
  const Word half = 4 * s + 2;
  const bool next_inside = 4 * s + 4 <= upper;
  const bool one_inside = (lower <= 4 * s) != next_inside;
  const bool next_nearer = (middle > half) | ((middle == half) & (s % 2 != 0));
  const Word nearest = s + ((one_inside & next_inside) | (!one_inside & next_nearer));

  // One digit less, if one of the two neighbours with that many lies inside.
  const Word tens = s / 10;
  const bool tens_inside = lower <= 40 * tens;
  const bool next_tens_inside = 40 * tens + 40 <= upper;
  const Word shorter = (tens > 0) & (tens_inside != next_tens_inside);
  const Word difference = tens + next_tens_inside - nearest;
  return {nearest + (difference & -shorter), k + static_cast<int>(shorter)};
}

}  // namespace

Decimal shortest_decimal(float value) {
  return shortest(value);
}
Decimal shortest_decimal(double value) {
  return shortest(value);
}

}  // namespace mod_p3dgrid::recordio
