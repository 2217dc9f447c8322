#include "cylinder_flow.hpp"

#include <array>
#include <cmath>

namespace p3dgrid::tool {
namespace {

constexpr double gamma = 1.4;  // ratio of specific heats
constexpr FlowParameters free_stream{.mach = 0.2, .alpha = 0, .reynolds = 0, .time = 100};
constexpr TimeStep last_step{.count = 400, .size = 0.25};

/// The state of the gas at a point outside the cylinder.
struct State {
  double density;
  double u, v;
  double pressure;
  double stream_function;

  [[nodiscard]] double speed_squared() const { return u * u + v * v; }
};

State state_at(double x, double y) {
  const double r2 = x * x + y * y;
  const double u = free_stream.mach * (1 - (x * x - y * y) / (r2 * r2));
  const double v = free_stream.mach * (-2 * x * y / (r2 * r2));
  const double temperature =
      1 + (gamma - 1) / 2 * (free_stream.mach * free_stream.mach - (u * u + v * v));
  const double density = std::pow(temperature, 1 / (gamma - 1));
  return {density, u, v, density * temperature / gamma, free_stream.mach * y * (1 - 1 / r2)};
}

std::array<double, 5> solution_of(const State& state) {
  const double energy = state.pressure / (gamma - 1) + state.density * state.speed_squared() / 2;
  return {state.density, state.density * state.u, state.density * state.v, 0, energy};
}

std::array<double, 3> functions_of(const State& state) {
  const double free_stream_pressure = 1 / gamma;
  const double dynamic_pressure = free_stream.mach * free_stream.mach / 2;
  const double sound_squared = gamma * state.pressure / state.density;
  return {(state.pressure - free_stream_pressure) / dynamic_pressure,
          std::sqrt(state.speed_squared() / sound_squared), state.stream_function};
}

/// Calls `take(point, state)` for every point, counted from 1.
template <class Take>
void for_each_state(const Grid& grid, Take take) {
  for (std::int64_t p = 1; p <= grid.points(); ++p) {
    take(p, state_at(static_cast<double>(grid.xyz(1, p)), static_cast<double>(grid.xyz(2, p))));
  }
}

template <std::size_t Count>
void store(mod_p3dgrid::allocatable<float, 2>& array, std::int64_t point,
           const std::array<double, Count>& values) {
  for (std::size_t n = 0; n < Count; ++n) array(n + 1, point) = static_cast<float>(values[n]);
}

}  // namespace

Restart cylinder_solution(const Grid& grid) {
  Restart restart;
  restart.extents = extents_of(grid);
  restart.sections = {{1, solution_variables}};
  restart.step = last_step;
  restart.parameters.assign(restart.extents.i.size(), free_stream);
  restart.flags = {end_of_extensions, 0, 0};
  allocate_flow(restart);
  allocate_triplets(restart);
  for_each_state(grid, [&](std::int64_t point, const State& state) {
    store(restart.flow, point, solution_of(state));
    store(restart.triplets, point, std::array<double, 3>{state.u, state.v, 0});
  });
  return restart;
}

Restart cylinder_functions(const Grid& grid) {
  Restart restart;
  restart.extents = extents_of(grid);
  restart.sections = {{1, 3}};
  allocate_flow(restart);
  for_each_state(grid, [&](std::int64_t point, const State& state) {
    store(restart.flow, point, functions_of(state));
  });
  return restart;
}

}  // namespace p3dgrid::tool
