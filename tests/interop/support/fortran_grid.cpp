#include "support/fortran_grid.hpp"

#include <algorithm>

#include "support/awkward_values.hpp"
#include "support/run_program.hpp"

namespace interop {
namespace {

std::vector<Extents> awkward_extents(const GridLayout& layout) {
  if (layout.planar && !layout.multiblock) return {{9, 37, 1}};
  if (layout.planar) return {{5, 4, 1}, {7, 1, 1}, {3, 0, 1}, {11, 6, 1}, {1, 1, 1}};
  if (!layout.multiblock) return {{9, 1, 37}};
  return {{5, 4, 3}, {7, 1, 2}, {3, 0, 4}, {11, 6, 2}, {1, 1, 1}};
}

/// Sets the third coordinates to 0 if the file has none.
template <class Real>
Grid<Real> as_held(const GridLayout& layout, Grid<Real> grid) {
  auto value = grid.coordinates.begin();
  for (const Extents& block : grid.extents) {
    const auto points = static_cast<std::ptrdiff_t>(points_of(block));
    if (layout.planar) std::fill_n(value + 2 * points, points, Real{0});
    value += 3 * points;
  }
  return grid;
}

void fill(std::vector<float>& values, std::size_t count) {
  values = awkward_floats(count);
}
void fill(std::vector<double>& values, std::size_t count) {
  values = awkward_doubles(count);
}

}  // namespace

template <class Real>
Grid<Real> awkward_grid(const GridLayout& layout) {
  Grid<Real> grid{awkward_extents(layout), {}, {}};
  fill(grid.coordinates, 3 * grid.points());
  grid = as_held(layout, std::move(grid));
  if (layout.has_iblank) grid.iblank = awkward_integers(grid.points());
  return grid;
}

template Grid<float> awkward_grid(const GridLayout&);
template Grid<double> awkward_grid(const GridLayout&);

std::vector<GridLayout> layouts_of(std::initializer_list<int> encodings) {
  std::vector<GridLayout> layouts;
  for (const int encoding : encodings) {
    for (const bool is_double : {false, true}) {
      for (const bool multiblock : {false, true}) {
        for (const bool has_iblank : {false, true}) {
          for (const bool planar : {false, true}) {
            layouts.push_back({encoding, is_double, multiblock, has_iblank, planar});
          }
        }
      }
    }
  }
  return layouts;
}

std::string layout_name(const testing::TestParamInfo<GridLayout>& parameter) {
  return parameter.param.name();
}

void FortranGrid::run(const char* verb, const GridLayout& layout) const {
  const Finished finished =
      run_program({program_, verb, bits_file(), grid_file(), layout.encoding_name(),
                   layout.precision_name(), layout.multiblock ? "yes" : "no",
                   layout.has_iblank ? "yes" : "no", layout.planar ? "2" : "3"});
  ASSERT_EQ(finished.status, 0) << finished.output;
}

}  // namespace interop
