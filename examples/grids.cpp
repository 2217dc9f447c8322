/// Reads a grid and a solution on it in whatever forms they have, prints the range of each
/// coordinate and variable, and writes the grid as text.
///
///     grids GRID SOLUTION OUT
///
/// It links the library alone. A failure is one line on standard error and the exit status 1.

#include <algorithm>
#include <iostream>
#include <p3dgrid/grid.hpp>
#include <p3dgrid/solution.hpp>

static void print_range(const char* name, const p3dgrid::Reals& reals) {
  reals.visit([name](auto values) {  // a span of float or of double
    if (values.empty()) return;
    const auto [least, most] = std::ranges::minmax(values);
    std::cout << "  " << name << " from " << least << " to " << most << '\n';
  });
}

static void convert(const char* grid_file, const char* solution_file, const char* out) {
  const p3dgrid::Grid grid = p3dgrid::read_grid(grid_file);
  std::cout << grid_file << ": " << grid.extents().points() << " points, "
            << p3dgrid::describe(grid.form) << '\n';
  for (const p3dgrid::Block& block : grid.blocks) {
    std::cout << " block of " << block.extents.points() << " points\n";
    print_range("x", block.x);
    print_range("y", block.y);
    print_range("z", block.z);
  }
  const p3dgrid::Solution flow = p3dgrid::read_solution(solution_file, {.grid = &grid});
  std::cout << solution_file << ": " << p3dgrid::describe(flow.form) << '\n';
  for (const p3dgrid::SolutionBlock& block : flow.blocks) {
    std::cout << " block of " << block.variables.size() << " variables\n";
    for (const p3dgrid::Reals& variable : block.variables) print_range("variable", variable);
  }
  p3dgrid::write_grid(out, grid, {.encoding = p3dgrid::Encoding::formatted});
}

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: grids GRID SOLUTION OUT\n";
    return 2;
  }
  try {
    convert(argv[1], argv[2], argv[3]);
  } catch (const p3dgrid::Error& error) {
    std::cerr << "grids: " << error.what() << '\n';
    return 1;
  }
}
