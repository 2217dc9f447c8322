#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/grid.hpp"
#include "support/grid_layout.hpp"
#include "support/scratch_directory.hpp"

namespace interop {

/// A grid of awkward values in blocks of differing extents, with planes, a block without points,
/// and a single point; one block alone if the layout has no block count. `Real` is `float` or
/// `double`.
template <class Real>
[[nodiscard]] Grid<Real> awkward_grid(const GridLayout& layout);

/// All layouts of the encodings.
[[nodiscard]] std::vector<GridLayout> layouts_of(std::initializer_list<int> encodings);

/// The name of a test for a layout.
[[nodiscard]] std::string layout_name(const testing::TestParamInfo<GridLayout>& parameter);

/// The Fortran program for grids, in a directory of its own.
class FortranGrid {
 public:
  explicit FortranGrid(std::string program) : program_(std::move(program)) {}

  [[nodiscard]] std::string grid_file() const { return scratch_.file("grid"); }

  template <class Real>
  void write(const GridLayout& layout, const Grid<Real>& grid) const {
    save_bits(bits_file(), grid);
    run("write", layout);
  }

  template <class Real>
  [[nodiscard]] Grid<Real> read(const GridLayout& layout) const {
    run("read", layout);
    return load_bits<Real>(bits_file(), layout.has_iblank);
  }

 private:
  [[nodiscard]] std::string bits_file() const { return scratch_.file("bits"); }

  void run(const char* verb, const GridLayout& layout) const;

  ScratchDirectory scratch_;
  std::string program_;
};

}  // namespace interop
