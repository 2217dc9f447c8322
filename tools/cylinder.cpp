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
double share(std::int32_t index, std::int32_t points) {
  return static_cast<double>(index) / static_cast<double>(points - 1);
}

double stretched_share(std::int32_t index, std::int32_t points) {
  return (std::pow(radial_growth, index) - 1.0) / (std::pow(radial_growth, points - 1) - 1.0);
}

/// Sine and cosine of multiples of a right angle become exact, so that both halves of the ring meet
/// in identical points.
double without_residue(double value) {
  return std::abs(value) < 1e-12 ? 0.0 : value;
}

/// Position of a point, counted from 0, in a plane of constant k.
Point position(std::size_t block, std::int32_t i, std::int32_t j) {
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
constexpr double free_stream_mach = 0.2;
constexpr RunData last_step{.nstep = 400, .dtau = 0.25};

struct State {
  double density;
  double u, v;
  double pressure;
  double stream_function;

  [[nodiscard]] double speed_squared() const { return u * u + v * v; }
};

State state_at(double x, double y) {
  const double r2 = x * x + y * y;
  const double u = free_stream_mach * (1 - (x * x - y * y) / (r2 * r2));
  const double v = free_stream_mach * (-2 * x * y / (r2 * r2));
  const double temperature =
      1 + (gamma - 1) / 2 * (free_stream_mach * free_stream_mach - (u * u + v * v));
  const double density = std::pow(temperature, 1 / (gamma - 1));
  return {density, u, v, density * temperature / gamma, free_stream_mach * y * (1 - 1 / r2)};
}

std::array<double, 5> solution_of(const State& state) {
  const double energy = state.pressure / (gamma - 1) + state.density * state.speed_squared() / 2;
  return {state.density, state.density * state.u, state.density * state.v, 0, energy};
}

std::array<double, 3> functions_of(const State& state) {
  const double free_stream_pressure = 1 / gamma;
  const double dynamic_pressure = free_stream_mach * free_stream_mach / 2;
  const double sound_squared = gamma * state.pressure / state.density;
  return {(state.pressure - free_stream_pressure) / dynamic_pressure,
          std::sqrt(state.speed_squared() / sound_squared), state.stream_function};
}

/// Arrays of `values_of(state)` at the points of a block.
template <class ValuesOf>
std::vector<Reals> arrays_of(const Block& block, ValuesOf values_of) {
  std::vector<Array<float>> arrays;
  for (std::int64_t p = 0; p < block.extents.points(); ++p) {
    const auto values = values_of(state_at(block.x[p], block.y[p]));
    arrays.resize(values.size());
    for (std::size_t n = 0; n < values.size(); ++n) {
      arrays[n].push_back(static_cast<float>(values[n]));
    }
  }
  std::vector<Reals> result;
  for (auto& array : arrays) result.emplace_back(std::move(array));
  return result;
}

Block cylinder_block(std::size_t number) {
  Block block{.extents = sizes.of(number)};
  Array<float> coordinates[3];
  for (std::int32_t k = 0; k < block.extents.k; ++k) {
    for (std::int32_t j = 0; j < block.extents.j; ++j) {
      for (std::int32_t i = 0; i < block.extents.i; ++i) {
        const auto [x, y] = position(number, i, j);
        coordinates[0].push_back(static_cast<float>(x));
        coordinates[1].push_back(static_cast<float>(y));
        coordinates[2].push_back(static_cast<float>(span * share(k, block.extents.k)));
        const bool in_ring = std::hypot(x, y) < outer_radius - overlap;
        block.iblank.push_back(number == wake_block && in_ring ? 0 : 1);
      }
    }
  }
  block.x = Reals(std::move(coordinates[0]));
  block.y = Reals(std::move(coordinates[1]));
  block.z = Reals(std::move(coordinates[2]));
  return block;
}

}  // namespace

Grid cylinder_grid() {
  Grid grid;
  for (std::size_t b = 0; b < sizes.i.size(); ++b) grid.blocks.push_back(cylinder_block(b));
  return grid;
}

Solution cylinder_solution(const Grid& grid) {
  Solution solution{.run = last_step};
  for (const Block& block : grid.blocks) {
    solution.blocks.push_back({.extents = block.extents,
                               .parameters = {free_stream_mach, 0, 0, 100},
                               .variables = arrays_of(block, solution_of),
                               .triplets = arrays_of(block, [](const State& state) {
                                 return std::array{state.u, state.v, 0.0};
                               })});
  }
  return solution;
}

Solution cylinder_functions(const Grid& grid) {
  Solution solution;
  for (const Block& block : grid.blocks) {
    solution.blocks.push_back(
        {.extents = block.extents, .variables = arrays_of(block, functions_of)});
  }
  return solution;
}

}  // namespace p3dgrid::tool
