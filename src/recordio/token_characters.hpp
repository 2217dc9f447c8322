#pragma once

#include <cstddef>

/// Separators of list-directed text.
namespace mod_p3dgrid::recordio {

/// The fast path wants a whole number in the buffer, which this many bytes hold but for unusual
/// ones.
inline constexpr std::ptrdiff_t bytes_at_hand = 64;

[[nodiscard]] inline bool is_blank(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}
[[nodiscard]] inline bool ends_token(char c) {
  return is_blank(c) || c == ',' || c == '/';
}

}  // namespace mod_p3dgrid::recordio
