#pragma once

#include <cstdint>

#include "detect/byte_source.hpp"

namespace p3dgrid {

/// What 32-bit words of a file can be, by a few stretches of them.
struct Words {
  bool small = true;  ///< flags and numbers of blocks; reals taken for integers are hardly ever so
  bool zero = true;   ///< zeros, which can be reals as well
  bool all = true;    ///< every one has been looked at
};

/// Looks at `count` words from byte `begin` on.
[[nodiscard]] Words look_at_words(ByteSource& source, std::uint64_t begin, std::uint64_t count,
                                  ByteOrder order);

}  // namespace p3dgrid
