/// Writes a grid with a solution file and a function file in every way of holding reals.
///   write_solutions DIRECTORY
/// NAME is a grid, NAME.q its solution, NAME.f seven functions on it. The bit patterns of the
/// values stand beside each, in files of its name and .bits.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "support/awkward_values.hpp"
#include "support/encoding.hpp"
#include "support/grid.hpp"
#include "support/library_grid.hpp"
#include "support/library_restart.hpp"
#include "support/solution.hpp"

namespace interop {
namespace {

void write_grid(const std::string& path, const GridLayout& layout,
                const std::vector<Extents>& extents) {
  Grid<float> grid{extents, {}, {}};
  grid.coordinates = awkward_floats(3 * grid.points());
  write_with_library(path, layout, grid);
  save_bits(path + ".bits", grid);
}

/// The values are saved as they stand in the file: flow travels in single precision.
void write_restart(const std::string& path, const RestartForm& form,
                   const std::vector<Extents>& extents) {
  Solution solution = awkward_solution(form, extents);
  std::ranges::fill(solution.counts, form.highest_variable());
  write_restart_with_library(path, form, solution);
  save_solution_bits(path + ".bits", as_held(form, narrowed(solution)));
}

void write_layout(const std::string& directory, int encoding, bool is_double, bool multiblock) {
  const std::vector<Extents> extents = multiblock
                                           ? std::vector<Extents>{{5, 4, 3}, {7, 6, 2}, {2, 9, 5}}
                                           : std::vector<Extents>{{6, 5, 7}};
  const std::string path = directory + "/" + name_of_encoding(encoding) + "_" +
                           name_of_precision(is_double) +
                           (multiblock ? "_multiblock" : "_single_block");
  write_grid(path, {encoding, is_double, multiblock, false}, extents);
  write_restart(path + ".q", {2, encoding, is_double, multiblock}, extents);
  write_restart(path + ".f", {3, encoding, is_double, multiblock, {{1, 7}}}, extents);
}

void write_all(const std::string& directory) {
  for (const int encoding : {0, 1, 2}) {
    for (const bool is_double : {false, true}) {
      for (const bool multiblock : {false, true}) {
        write_layout(directory, encoding, is_double, multiblock);
      }
    }
  }
}

}  // namespace
}  // namespace interop

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::invalid_argument("usage: write_solutions DIRECTORY");
    interop::write_all(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
