#pragma once

#include <array>
#include <span>

namespace p3dgrid::tool {

/// Ratio of specific heats of air.
inline constexpr double gamma_of_air = 1.4;

/// The variables of a PLOT3D solution, in file order.
inline constexpr std::array solution_names = {"density", "x-momentum", "y-momentum", "z-momentum",
                                              "energy"};

/// Primitive variables at a point, in the units of the file.
struct Primitive {
  double u = 0;
  double v = 0;
  double w = 0;
  double pressure = 0;
  double density = 0;
};

/// @param conserved  density, momentum and energy. A density of 0 gives infinities and NaN.
template <class Real>
[[nodiscard]] Primitive primitive_of(std::span<const Real> conserved, double gamma) {
  const double density = conserved[0];
  const double u = conserved[1] / density;
  const double v = conserved[2] / density;
  const double w = conserved[3] / density;
  const double kinetic_energy = 0.5 * density * (u * u + v * v + w * w);
  return {u, v, w, (gamma - 1) * (conserved[4] - kinetic_energy), density};
}

}  // namespace p3dgrid::tool
