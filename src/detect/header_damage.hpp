#pragma once

#include <string>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// What is wrong with the header of a file that no reading can take, or of which none comes out
/// even: the first marker that is not what the rest asks for, a header that ends too early, numbers
/// that cannot be extents, more blocks than a text has lines for. As part of a sentence; empty
/// where the file does not begin like a grid or solution.
[[nodiscard]] std::string header_damage(Evidence& file);

/// What a file begins with that has no header, for people: the first line of text, else bytes.
[[nodiscard]] std::string beginning_of(Evidence& file);

}  // namespace p3dgrid
