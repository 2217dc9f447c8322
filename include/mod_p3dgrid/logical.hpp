#pragma once

#include <concepts>
#include <cstdint>

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// Signed 32-bit integer.
using integer = std::int32_t;

/// Logical value of 32 bits. Only the lowest bit is tested; true is stored with all bits set.
/// Converts from `bool` only, so numbers and pointers do not compile as flags, and explicitly to
/// it.
class logical {
 public:
  /// False.
  constexpr logical() noexcept = default;

  /// The value of a `bool`.
  template <std::same_as<bool> Bool>
  constexpr logical(Bool value) noexcept : bits_(value ? -1 : 0) {}

  /// A stored value.
  [[nodiscard]] static constexpr logical from_bits(std::int32_t bits) noexcept {
    logical result;
    result.bits_ = bits;
    return result;
  }

  /// The 32 bits as stored.
  [[nodiscard]] constexpr std::int32_t bits() const noexcept { return bits_; }

  /// Whether the lowest bit is set.
  constexpr explicit operator bool() const noexcept { return (bits_ & 1) != 0; }

  /// Compares the lowest bits only.
  friend constexpr bool operator==(logical a, logical b) noexcept {
    return static_cast<bool>(a) == static_cast<bool>(b);
  }

 private:
  std::int32_t bits_ = 0;
};

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
