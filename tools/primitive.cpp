#include "primitive.hpp"

namespace p3dgrid::tool {

Primitive primitive_of(std::span<const float> conserved, double gamma) {
  const double density = conserved[0];
  const double u = conserved[1] / density;
  const double v = conserved[2] / density;
  const double w = conserved[3] / density;
  const double kinetic_energy = 0.5 * density * (u * u + v * v + w * w);
  return {u, v, w, (gamma - 1) * (conserved[4] - kinetic_energy), density};
}

}  // namespace p3dgrid::tool
