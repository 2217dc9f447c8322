#pragma once

#include <span>

namespace p3dgrid::tool {

/// Ratio of specific heats of air.
inline constexpr double gamma_of_air = 1.4;

/// What the variables of a PLOT3D solution come to at a point, in the file's own units.
struct Primitive {
  double u = 0;
  double v = 0;
  double w = 0;
  double pressure = 0;
  double density = 0;
};

/// @param conserved  density, three components of the momentum, and energy. A density of 0 gives
///                   infinities and NaN, as arithmetic has it.
[[nodiscard]] Primitive primitive_of(std::span<const float> conserved, double gamma);

}  // namespace p3dgrid::tool
