#pragma once

#include <cstdint>
#include <string>

#include "grid_file.hpp"

namespace p3dgrid::tool {

/// Grid around a circular cylinder in cross flow, the sample case. The cylinder has radius 1 and
/// its axis is z; the stream comes along x.
///
/// Block 1 is the upper half of the ring around the cylinder, block 2 the lower half: i runs along
/// the wall in the clockwise sense, j outward with growing steps, k along the axis. Block 3 is a
/// box over the wake, i downstream, j upward; it overlaps the ring. All blocks are right-handed.
///
/// Blanking is 1, and 0 for the points of block 3 that lie well inside the ring, where blocks 1 and
/// 2 are the finer grid. Its outermost overlapping points stay in use.
[[nodiscard]] Grid cylinder_grid();

}  // namespace p3dgrid::tool
