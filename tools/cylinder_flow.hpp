#pragma once

#include "grid_file.hpp"
#include "restart_file.hpp"

namespace p3dgrid::tool {

/// The flow around the sample's cylinder: potential flow, inviscid and without circulation, its
/// velocities those of the incompressible case, its thermodynamic state the isentropic one that
/// belongs to these velocities at Mach number 0.2. Lengths are in radii, density in that of the
/// free stream, velocities in the free stream's speed of sound.

/// The five variables of a solution file: density, the three components of momentum, and stagnation
/// energy per volume. With them step and flow parameters, and the velocity as triplets.
[[nodiscard]] Restart cylinder_solution(const Grid& grid);

/// Three functions: pressure coefficient, local Mach number, stream function.
[[nodiscard]] Restart cylinder_functions(const Grid& grid);

}  // namespace p3dgrid::tool
