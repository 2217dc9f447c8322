#pragma once

#include <string>
#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Why two-dimensional files cannot be read, as part of a sentence.
inline constexpr const char* planar_not_read =
    "cannot be read; only three dimensions can, with k extents of 1 for a plane";

/// "a grid in two dimensions" or "a solution in two dimensions" if the records or the length of the
/// file agree with one; else empty.
[[nodiscard]] std::string planar_form(Evidence& file, const Coding& coding);

/// A binary two-dimensional grid of one block ni x nj, with a block count, two coordinates and
/// blanking values, has the length of a block 1 x ni x nj without block count. The values in the
/// place of the third coordinates tell the two apart unless they are zeros.

/// Whether a file with the length of `form` is such a two-dimensional grid.
[[nodiscard]] bool is_planar_instead(Evidence& file, const GridForm& form, const Extents& extents);

/// The possible readings of a file with the length of `reading`: that, such a two-dimensional grid,
/// or both.
[[nodiscard]] std::vector<Reading> with_planar_reading(Evidence& file, const Reading& reading,
                                                       const StatedGridForm& stated);

}  // namespace p3dgrid
