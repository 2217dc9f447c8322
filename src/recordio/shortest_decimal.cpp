#include "recordio/shortest_decimal.hpp"

#include <bit>
#include <limits>

#include "recordio/powers_of_ten.hpp"

namespace mod_p3dgrid::recordio {
namespace {

__extension__ using Wide = unsigned __int128;

/// floor(log2(10^e)) and floor(log10(2^e)), for all exponents of doubles.
constexpr int log2_of_power_of_ten(int e) {
  return (e * 1741647) >> 19;
}
constexpr int log10_of_power_of_two(int e) {
  return (e * 1262611) >> 22;
}

/// A product: its integer part, and whether its fraction is zero.
template <class Word>
struct Scaled {
  Word integer;
  bool whole;
};

/// The lowest bit of an integer part, and whether the fraction is zero.
struct Parity {
  bool odd;
  bool whole;
};

/// A power of ten times 2^(`beta` - 63), with the precision that singles need. It is chosen so that
/// the interval that rounds to a number has between 10^kappa and 10^(kappa + 1) units.
class PowerForSingles {
 public:
  using Word = std::uint32_t;
  static constexpr int kappa = 1;

  PowerForSingles(const PowerOfTen& power, int beta)
      : power_(power.high + (power.low != 0)), beta_(beta) {}

  /// Times 1.
  [[nodiscard]] Word unit() const { return static_cast<Word>(power_ >> (63 - beta_)); }
  /// Times half of `factor`.
  [[nodiscard]] Scaled<Word> times(Word factor) const {
    const auto product = static_cast<std::uint64_t>(Wide{power_} * (factor << beta_) >> 32);
    return {static_cast<Word>(product >> 32), static_cast<Word>(product) == 0};
  }
  /// The lowest bit and the fraction of `times(factor)`.
  [[nodiscard]] Parity parity(Word factor) const {
    const std::uint64_t low = power_ * factor;
    return {(low >> (64 - beta_) & 1) != 0, static_cast<Word>(low >> (32 - beta_)) == 0};
  }
  /// `number / 10` for numbers up to 100.
  [[nodiscard]] static Word small_quotient(Word number) { return number * 6554 >> 16; }

 private:
  std::uint64_t power_;
  int beta_;
};

/// The same for doubles.
class PowerForDoubles {
 public:
  using Word = std::uint64_t;
  static constexpr int kappa = 2;

  PowerForDoubles(const PowerOfTen& power, int beta) : power_(power), beta_(beta) {}

  [[nodiscard]] Word unit() const { return power_.high >> (63 - beta_); }
  [[nodiscard]] Scaled<Word> times(Word factor) const {
    factor <<= beta_;
    const Wide product = Wide{power_.high} * factor + (Wide{power_.low} * factor >> 64);
    return {static_cast<Word>(product >> 64), static_cast<Word>(product) == 0};
  }
  [[nodiscard]] Parity parity(Word factor) const {
    const Word high = power_.high * factor;
    const Wide low = (Wide{high} << 64) + Wide{power_.low} * factor;
    return {(low >> (128 - beta_) & 1) != 0, static_cast<Word>(low >> (64 - beta_)) == 0};
  }
  /// `number / 100` for numbers up to 1000.
  [[nodiscard]] static Word small_quotient(Word number) { return number * 656 >> 16; }

 private:
  PowerOfTen power_;
  int beta_;
};

/// The number c * 2^q.
template <class Word>
struct Binary {
  Word c;
  int q;
};

template <class Word, class Real>
Binary<Word> parts_of(Real value) {
  constexpr int fraction_bits = std::numeric_limits<Real>::digits - 1;
  constexpr int bias = std::numeric_limits<Real>::max_exponent - 1 + fraction_bits;
  constexpr Word leading = Word{1} << fraction_bits;
  const auto bits = std::bit_cast<Word>(value);
  const Word fraction = bits & (leading - 1);
  const int biased = static_cast<int>(bits >> fraction_bits);
  return {biased == 0 ? fraction : fraction | leading, (biased == 0 ? 1 : biased) - bias};
}

template <class Real, class Power>
Decimal shortest(Real value) {
  using Word = typename Power::Word;
  constexpr int fraction_bits = std::numeric_limits<Real>::digits - 1;
  constexpr Word small = Power::kappa == 1 ? 10 : 100;
  constexpr Word large = 10 * small;
  const auto [c, q] = parts_of<Word>(value);

  // Branch-free, because whether a value is below 1 is unpredictable; whole values are rare.
  const int behind_point = -q & (std::numeric_limits<Word>::digits - 1);
  const bool fraction_is_zero = (c & ((Word{1} << behind_point) - 1)) == 0;
  if (fraction_is_zero & (q <= 0) & (q >= -fraction_bits)) return {c >> -q, 0};

  // From here on in units of 10^k. The interval that rounds to the value has `length` of them,
  // between `small` and `large`. It includes its ends if c is even.
  const int k = log10_of_power_of_two(q) - Power::kappa;
  const Power power(powers_of_ten[static_cast<std::size_t>(-k - least_power)],
                    q + log2_of_power_of_ten(-k));
  const Word length = power.unit();
  const bool with_ends = c % 2 == 0;
  const Scaled<Word> upper = power.times(2 * c + 1);

  // The greatest multiple of `large` below the upper end, and whether it is inside the interval.
  Word multiple = upper.integer / large;
  Word below = upper.integer - multiple * large;
  bool inside = below < length;
  if (below == length) {
    const Parity lower = power.parity(2 * c - 1);
    inside = lower.odd || (lower.whole && with_ends);
  } else if (below == 0 && upper.whole && !with_ends) {
    --multiple;
    below = large;
    inside = false;
  }

  // Otherwise the multiple of `small` nearest to the value. Whether it is needed is unpredictable,
  // hence branch-free.
  const Word distance = below - length / 2 + small / 2;
  const Word steps = Power::small_quotient(distance);
  Word digits = 10 * multiple + (steps & -static_cast<Word>(!inside));
  if (distance - steps * small + inside == 0) {
    // The value is close to the midpoint of two multiples.
    const Parity middle = power.parity(2 * c);
    const bool expected_odd = ((distance ^ (small / 2)) & 1) != 0;
    digits -= (middle.odd != expected_odd) | (middle.whole & (digits % 2 != 0));
  }
  return {digits, k + Power::kappa};
}

}  // namespace

Decimal shortest_decimal(float value) {
  return shortest<float, PowerForSingles>(value);
}
Decimal shortest_decimal(double value) {
  return shortest<double, PowerForDoubles>(value);
}

}  // namespace mod_p3dgrid::recordio
