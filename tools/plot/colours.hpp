#pragma once

#include <cstddef>
#include <cstdint>

namespace p3dgrid::tool::plot {

/// Red, green and blue, 8 bits each, red highest.
using Colour = std::uint32_t;

inline constexpr Colour white = 0xffffff;
inline constexpr Colour ink = 0x1a1a1a;         ///< text and frames
inline constexpr Colour pale_ink = 0x606060;    ///< secondary text
inline constexpr Colour back_line = 0xc8c8c8;   ///< edges of the box behind the surfaces
inline constexpr Colour no_number = 0xb4b4b4;   ///< cells without a finite value
inline constexpr Colour block_edge = 0x747474;  ///< outlines of blocks on a coloured surface

/// The colour for a share from 0 to 1: dark violet by way of green to yellow, in steps that the eye
/// finds even, and readable in grey.
[[nodiscard]] Colour map_colour(double share);

/// The colour of a block's lines; blocks are counted from 0, and the colours come round again.
[[nodiscard]] Colour block_colour(std::size_t block);

/// The colour darkened: 1 leaves it, 0 makes it black.
[[nodiscard]] Colour dimmed(Colour colour, double light);

}  // namespace p3dgrid::tool::plot
