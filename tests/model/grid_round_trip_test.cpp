/// Random grids, written and read in every form one after the other.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "model/generators.hpp"

namespace test_support {
void showValue(const GridForm& form, std::ostream& out) {
  out << name_of(form);
}
}  // namespace test_support

namespace model {
namespace {

using namespace mod_p3dgrid;
using test_support::Grid;
using test_support::GridForm;
using test_support::vector_of;

class GridRoundTrip : public test_support::InScratchFolder {};

/// A grid as a model sees it: values, and what each form does to them.
struct GridValues {
  std::vector<Extents> extents;
  std::vector<float> xyz;
  std::vector<integer> iblank;

  /// What is read back from a file of this form.
  void go_through(const GridForm& form) {
    if (!form.multiblock) extents.resize(1);
    const auto points = static_cast<std::size_t>(Blocks(extents).total);
    xyz.resize(3 * points);
    iblank.resize(points);
    if (form.dblprec && form.iformat != 1) std::ranges::transform(xyz, xyz.begin(), through_double);
  }
};

rc::Gen<GridForm> grid_form() {
  return rc::gen::build<GridForm>(
      rc::gen::set(&GridForm::iformat, rc::gen::inRange(0, 3)), rc::gen::set(&GridForm::dblprec),
      rc::gen::set(&GridForm::multiblock), rc::gen::set(&GridForm::iblank));
}

GridValues any_grid() {
  GridValues grid;
  grid.extents = *block_extents().as("extents");
  const std::int64_t points = Blocks(grid.extents).total;
  grid.xyz = *any_reals(3 * points).as("xyz");
  grid.iblank = *rc::gen::container<std::vector<integer>>(static_cast<std::size_t>(points),
                                                          rc::gen::arbitrary<integer>())
                     .as("iblank");
  return grid;
}

void write(const GridValues& grid, const GridForm& form) {
  const Blocks blocks(grid.extents);
  writep3dgrid("grid", form.iformat, form.dblprec, blocks.count(), 3,
               array_view<const float, 2>(grid.xyz.data(), 3, blocks.total), blocks.idim,
               blocks.jdim, blocks.kdim, grid.iblank, form.iblank, form.multiblock);
}

void expect_header(const GridValues& grid, const GridForm& form) {
  integer nblocks = 0;
  integer ndim = 0;
  integer npoints = 0;
  readp3dgridheader("grid", form.iformat, nblocks, ndim, form.multiblock, npoints);
  RC_ASSERT(nblocks == std::ssize(grid.extents));
  RC_ASSERT(npoints == Blocks(grid.extents).total);
}

void expect_grid(const GridValues& grid, const GridForm& form) {
  const Blocks blocks(grid.extents);
  Grid read;
  read.read("grid", form);
  RC_ASSERT(test_support::count_calls("dispfilereaderror") == 0);
  RC_ASSERT(read.nblocks == blocks.count());
  RC_ASSERT(vector_of(read.idim) == blocks.idim);
  RC_ASSERT(vector_of(read.jdim) == blocks.jdim);
  RC_ASSERT(vector_of(read.kdim) == blocks.kdim);
  RC_ASSERT(bits_of(read.xyz.span()) == bits_of(grid.xyz));
  RC_ASSERT(read.iblank.allocated() == form.iblank);
  if (form.iblank) RC_ASSERT(vector_of(read.iblank) == grid.iblank);
  RC_ASSERT(!test_support::is_open("grid"));
}

/// Without a block count a binary file and a text of several blocks read as something else.
bool reads_as_its_first_block(const GridForm& form) {
  return form.multiblock || form.iformat == 0;
}

TEST_F(GridRoundTrip, EveryEncodingGivesBackWhatWasWritten) {
  const bool held = rc::check("a grid goes through four files in a row", [] {
    const InEmptyFolder folder;
    GridValues grid = any_grid();
    for (int file = 0; file < 4; ++file) {
      GridForm form = *grid_form().as("form");
      if (grid.extents.size() > 1 && !reads_as_its_first_block(form)) form.multiblock = true;
      write(grid, form);
      grid.go_through(form);
      expect_header(grid, form);
      expect_grid(grid, form);
    }
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace model
