/// Writes one grid file in every layout, with the bit patterns of its values beside it.
///   write_grids DIRECTORY
/// GRID and GRID.bits are the files of a layout, GRID its name.

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "support/awkward_values.hpp"
#include "support/grid.hpp"
#include "support/library_grid.hpp"

namespace interop {
namespace {

void write_layout(const std::string& directory, const GridLayout& layout) {
  Grid<float> grid;
  grid.extents = layout.multiblock
                     ? std::vector<Extents>{{5, 4, 3}, {7, 6, 2}, {4, 3, 1}, {2, 9, 5}}
                     : std::vector<Extents>{{6, 5, 7}};
  grid.coordinates = awkward_floats(3 * grid.points());
  if (layout.has_iblank) grid.iblank = awkward_integers(grid.points());
  const std::string path = directory + "/" + layout.name();
  write_with_library(path, layout, grid);
  save_bits(path + ".bits", grid);
}

void write_all(const std::string& directory) {
  for (const int encoding : {0, 1, 2}) {
    for (const bool is_double : {false, true}) {
      for (const bool multiblock : {false, true}) {
        for (const bool has_iblank : {false, true}) {
          write_layout(directory, {encoding, is_double, multiblock, has_iblank});
        }
      }
    }
  }
}

}  // namespace
}  // namespace interop

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::invalid_argument("usage: write_grids DIRECTORY");
    interop::write_all(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
