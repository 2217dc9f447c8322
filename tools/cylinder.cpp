#include "cylinder.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "primitive.hpp"

namespace p3dgrid::tool {
namespace {

using Point = std::array<double, 2>;

const Extents sizes = {{49, 41, 35}, {25, 25, 17}, {5, 5, 5}};
constexpr std::size_t upper_block = 0;
constexpr std::size_t wake_block = 2;

constexpr double wall_radius = 1.0;
constexpr double outer_radius = 8.0;
constexpr double radial_growth = 1.15;  // of each step against the one before
constexpr double span = 2.0;

constexpr double wake_begin = 3.0;
constexpr double wake_end = 20.0;
constexpr double wake_half_height = 4.0;
constexpr double overlap = 1.0;  // depth to which the ring and the box are both in use

/// Share of the way from the first point (0) to the last (1).
double share(integer index, integer points) {
  return static_cast<double>(index) / static_cast<double>(points - 1);
}

double stretched_share(integer index, integer points) {
  return (std::pow(radial_growth, index) - 1.0) / (std::pow(radial_growth, points - 1) - 1.0);
}

/// Sine and cosine of multiples of a right angle become exact, so that both halves of the ring meet
/// in identical points.
double without_residue(double value) {
  return std::abs(value) < 1e-12 ? 0.0 : value;
}

/// Position of a point, counted from 0, in a plane of constant k.
Point position(std::size_t block, integer i, integer j) {
  const double along = share(i, sizes.i[block]);
  if (block == wake_block) {
    const double upward = share(j, sizes.j[block]);
    return {wake_begin + (wake_end - wake_begin) * along, wake_half_height * (2.0 * upward - 1.0)};
  }
  // From the x axis, counter-clockwise.
  const double angle = ((block == upper_block ? 1.0 : 0.0) - along) * std::numbers::pi;
  const double outward = stretched_share(j, sizes.j[block]);
  const double radius = wall_radius + (outer_radius - wall_radius) * outward;
  return {radius * without_residue(std::cos(angle)), radius * without_residue(std::sin(angle))};
}

constexpr double gamma = gamma_of_air;
constexpr FlowParameters free_stream{.mach = 0.2, .alpha = 0, .reynolds = 0, .time = 100};
constexpr TimeStep last_step{.count = 400, .size = 0.25};

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

/// Stores `values_of(state)` in the column of every point.
template <class ValuesOf>
void store(const Grid& grid, allocatable<float, 2>& array, ValuesOf values_of) {
  for (std::int64_t p = 1; p <= grid.points(); ++p) {
    const auto values = values_of(
        state_at(static_cast<double>(grid.xyz(1, p)), static_cast<double>(grid.xyz(2, p))));
    for (std::size_t n = 0; n < values.size(); ++n) {
      array(n + 1, p) = static_cast<float>(values[n]);
    }
  }
}

}  // namespace

Grid cylinder_grid() {
  Grid grid = grid_with(sizes);
  allocate_blanking(grid);
  std::int64_t at = 0;
  for (std::size_t block = 0; block < sizes.i.size(); ++block) {
    for (integer k = 0; k < sizes.k[block]; ++k) {
      for (integer j = 0; j < sizes.j[block]; ++j) {
        for (integer i = 0; i < sizes.i[block]; ++i) {
          const auto [x, y] = position(block, i, j);
          ++at;
          grid.xyz(1, at) = static_cast<float>(x);
          grid.xyz(2, at) = static_cast<float>(y);
          grid.xyz(3, at) = static_cast<float>(span * share(k, sizes.k[block]));
          const bool in_ring = std::hypot(x, y) < outer_radius - overlap;
          if (block == wake_block && in_ring) grid.iblank(at) = 0;
        }
      }
    }
  }
  return grid;
}

Grid upper_half(const Grid& cylinder) {
  Grid upper = grid_with({{cylinder.idim(1)}, {cylinder.jdim(1)}, {cylinder.kdim(1)}});
  std::copy_n(cylinder.xyz.data(), upper.xyz.size(), upper.xyz.data());
  return upper;
}

Restart cylinder_solution(const Grid& grid) {
  Restart restart;
  restart.extents = extents_of(grid);
  restart.sections = {{1, solution_variables}};
  restart.step = last_step;
  restart.parameters.assign(restart.extents.i.size(), free_stream);
  restart.flags = {end_of_extensions, 0, 0};
  allocate_flow(restart);
  allocate_triplets(restart);
  store(grid, restart.flow, solution_of);
  store(grid, restart.triplets, [](const State& state) {
    return std::array{state.u, state.v, 0.0};
  });
  return restart;
}

Restart cylinder_functions(const Grid& grid) {
  Restart restart;
  restart.extents = extents_of(grid);
  restart.sections = {{1, 3}};
  allocate_flow(restart);
  store(grid, restart.flow, functions_of);
  return restart;
}

}  // namespace p3dgrid::tool
