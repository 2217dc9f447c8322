#pragma once

#include <string>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Describes the damage in the header of a file that agrees with no reading: a wrong first marker,
/// a header that ends too early, invalid extents, more blocks than lines of text. Part of a
/// sentence; empty if the file does not begin like a grid or solution.
[[nodiscard]] std::string header_damage(Evidence& file);

/// Shows the beginning of a file: its first line of text, or its first bytes.
[[nodiscard]] std::string beginning_of(Evidence& file);

}  // namespace p3dgrid
