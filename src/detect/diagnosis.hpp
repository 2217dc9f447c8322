#pragma once

#include <string>

#include "detect/evidence.hpp"

/// Descriptions of a file that agrees with no reading, as parts of a sentence.
namespace p3dgrid {

/// A form of other programs that cannot be read: unformatted files with other records or with
/// 64-bit integers, text with other line ends. Empty for other files.
[[nodiscard]] std::string foreign_form(Evidence& file);

/// Damage in the header: a wrong first marker, a header that ends too early, invalid extents, more
/// blocks than lines of text. Empty if the file does not begin like a grid or solution.
[[nodiscard]] std::string header_damage(Evidence& file);

/// The first line of text, or the first bytes of other files.
[[nodiscard]] std::string beginning_of(Evidence& file);

}  // namespace p3dgrid
