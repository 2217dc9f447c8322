#pragma once

#include <concepts>
#include <cstdint>

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// Default integer of the system: 32 bits, signed.
using integer = std::int32_t;

/// Logical value of 32 bits: true when the lowest bit is set, true stored with all bits set.
///
/// Made from a `bool` and from nothing else, so that a number or a pointer in the place of a flag
/// does not compile. Reads as a condition (`if (flag)`), never as a number.
class logical {
 public:
  /// False.
  constexpr logical() noexcept = default;

  /// What the `bool` says.
  template <std::same_as<bool> Bool>
  constexpr logical(Bool value) noexcept : bits_(value ? -1 : 0) {}

  /// Takes over a stored value; only its lowest bit decides what it means.
  [[nodiscard]] static constexpr logical from_bits(std::int32_t bits) noexcept {
    logical result;
    result.bits_ = bits;
    return result;
  }

  /// The 32 bits as stored.
  [[nodiscard]] constexpr std::int32_t bits() const noexcept { return bits_; }

  /// True when the lowest bit is set.
  constexpr explicit operator bool() const noexcept { return (bits_ & 1) != 0; }

  /// Two logicals are equal when they mean the same, whatever their upper bits hold.
  friend constexpr bool operator==(logical a, logical b) noexcept {
    return static_cast<bool>(a) == static_cast<bool>(b);
  }

 private:
  std::int32_t bits_ = 0;
};

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
