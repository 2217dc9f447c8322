#pragma once

#include <cstdint>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// What 32-bit words of a file can be, by a few stretches of them.
struct Words {
  bool small = true;  ///< flags and numbers of blocks; reals taken for integers are hardly ever so
  bool zero = true;   ///< zeros, which can be reals as well
  bool all = true;    ///< every one has been looked at
};

/// Looks at `count` words from byte `begin` on.
[[nodiscard]] Words look_at_words(Evidence& file, std::int64_t begin, std::int64_t count,
                                  ByteOrder order);

}  // namespace p3dgrid
