#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// Powers of ten as 128-bit binary fractions, computed at compile time.
namespace mod_p3dgrid::recordio {

/// A power of ten, rounded up, as `high * 2^64 + low` times a power of two. `high` has its highest
/// bit set.
struct PowerOfTen {
  std::uint64_t high;
  std::uint64_t low;
};

/// Exponents that doubles need.
inline constexpr int least_power = -292;
inline constexpr int greatest_power = 326;

namespace detail {

/// A natural number below 2^1088 in words of 32 bits, the lowest first.
class Natural {
 public:
  constexpr explicit Natural(std::uint32_t value) { words_[0] = value; }

  /// 2^1087.
  static constexpr Natural large() {
    Natural number(0);
    number.words_.back() = std::uint32_t{1} << 31;
    return number;
  }

  constexpr void multiply_by_five() {
    std::uint64_t carry = 0;
    for (std::uint32_t& word : words_) {
      carry += std::uint64_t{word} * 5;
      word = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }
  constexpr void divide_by_five() {
    std::uint64_t rest = 0;
    for (std::size_t i = words_.size(); i-- > 0;) {
      rest = rest << 32 | words_[i];
      words_[i] = static_cast<std::uint32_t>(rest / 5);
      rest %= 5;
    }
  }

  /// The 128 leading bits, rounded up if `exact` is false or a lower bit is set.
  [[nodiscard]] constexpr PowerOfTen leading_bits(bool exact) const {
    std::int64_t top = std::int64_t{words} - 1;
    while (word(top) == 0) --top;
    const int shift = std::countl_zero(word(top));
    const auto shifted = [&](std::int64_t i) {
      const std::uint64_t pair = std::uint64_t{word(i)} << 32 | word(i - 1);
      return static_cast<std::uint32_t>(pair << shift >> 32);
    };
    PowerOfTen leading{std::uint64_t{shifted(top)} << 32 | shifted(top - 1),
                       std::uint64_t{shifted(top - 2)} << 32 | shifted(top - 3)};
    bool up = !exact;
    for (std::int64_t i = top - 4; i >= 0 && !up; --i) up = shifted(i) != 0;
    leading.low += up;
    leading.high += up && leading.low == 0;
    return leading;
  }

 private:
  static constexpr std::size_t words = 34;

  [[nodiscard]] constexpr std::uint32_t word(std::int64_t i) const {
    return i < 0 ? 0 : words_[static_cast<std::size_t>(i)];
  }

  std::array<std::uint32_t, words> words_{};
};

}  // namespace detail

inline constexpr auto powers_of_ten = [] {
  std::array<PowerOfTen, greatest_power - least_power + 1> powers{};
  // Powers of five have the same leading bits.
  detail::Natural positive(1);
  for (int e = 0; e <= greatest_power; ++e, positive.multiply_by_five()) {
    powers[static_cast<std::size_t>(e - least_power)] = positive.leading_bits(true);
  }
  detail::Natural negative = detail::Natural::large();
  for (int e = 0; e >= least_power; --e, negative.divide_by_five()) {
    powers[static_cast<std::size_t>(e - least_power)] = negative.leading_bits(e == 0);
  }
  return powers;
}();

}  // namespace mod_p3dgrid::recordio
