#pragma once

#include <string>
#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Why files in two dimensions cannot be read, as part of a sentence.
inline constexpr const char* planar_not_read =
    "cannot be read; only three dimensions can, with k extents of 1 for a plane";

/// "a grid in two dimensions", or a solution, where the records or the length of the file are those
/// of one; else empty.
[[nodiscard]] std::string planar_form(Evidence& file, const Coding& coding);

/// Of the points of a block ni x nj a binary grid in two dimensions has two reals and a blanking
/// value, behind a block count of 1. That is as long as a block 1 x ni x nj of three reals without
/// a block count. What stands in the place of the third real tells the two apart; only zeros may
/// be either.

/// True of a file as long as a form asks for, which holds integers in that place.
[[nodiscard]] bool is_planar_twin(Evidence& file, const GridForm& form, const Extents& extents);

/// What a file can be that is as long as a reading asks for: that, or a grid in two dimensions, or
/// both.
[[nodiscard]] std::vector<Reading> with_planar_twin(Evidence& file, const Reading& reading,
                                                    const StatedGridForm& stated);

}  // namespace p3dgrid
