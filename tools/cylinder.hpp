#pragma once

#include <p3dgrid/grid.hpp>
#include <p3dgrid/solution.hpp>

namespace p3dgrid::tool {

/// Grid around a circular cylinder in cross flow, the sample case. The cylinder has radius 1 and
/// its axis is z; the stream comes along x.
///
/// Block 1 is the upper half of the ring around the cylinder, block 2 the lower half: i runs along
/// the wall in the clockwise sense, j outward with growing steps, k along the axis. Block 3 is a
/// box over the wake, i downstream, j upward; it overlaps the ring. All blocks are right-handed.
///
/// Blanking is 0 for the points of block 3 that lie well inside the ring, where blocks 1 and 2 are
/// the finer grid, and 1 elsewhere.
[[nodiscard]] Grid cylinder_grid();

/// The five variables of a solution file: density, the three components of momentum, and stagnation
/// energy per volume. With them step and flow parameters, and the velocity as triplets.
///
/// The velocities are those of incompressible potential flow without circulation, with the
/// isentropic thermodynamic state at Mach number 0.2. Lengths are in radii, density and velocities
/// in the density and speed of sound of the free stream.
[[nodiscard]] Solution cylinder_solution(const Grid& grid);

/// Three functions of the same flow: pressure coefficient, local Mach number, stream function.
[[nodiscard]] Solution cylinder_functions(const Grid& grid);

}  // namespace p3dgrid::tool
