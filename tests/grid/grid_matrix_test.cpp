/// Every form of a grid file, read from bytes made by hand and written to the same bytes.

#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;

class GridMatrix : public InScratchFolder, public ::testing::WithParamInterface<GridForm> {
 protected:
  HandMadeGrid made{GetParam()};

  void expect_the_grid(const Grid& grid) const {
    ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
    EXPECT_EQ(grid.nblocks, made.blocks());
    EXPECT_EQ(grid.ndim, 3);
    EXPECT_EQ(vector_of(grid.idim), GetParam().multiblock ? std::vector({2, 3}) : std::vector({2}));
    EXPECT_EQ(vector_of(grid.jdim), GetParam().multiblock ? std::vector({2, 1}) : std::vector({2}));
    EXPECT_EQ(vector_of(grid.kdim), GetParam().multiblock ? std::vector({2, 1}) : std::vector({2}));
    EXPECT_EQ(grid.xyz.extent(1), 3);
    EXPECT_EQ(vector_of(grid.xyz), made.xyz());
    EXPECT_EQ(grid.iblank.allocated(), GetParam().iblank);
    EXPECT_EQ(vector_of(grid.iblank), made.iblank());
  }
};

TEST_P(GridMatrix, IsReadFromBytesMadeByHand) {
  write_file("grid", made.bytes(false));
  Grid grid;
  grid.read("grid", GetParam());
  expect_the_grid(grid);
}

TEST_P(GridMatrix, HeaderIsReadFromBytesMadeByHand) {
  write_file("grid", made.bytes(false));
  integer nblocks = 0;
  integer ndim = 0;
  integer npoints = 0;
  readp3dgridheader("grid", GetParam().iformat, nblocks, ndim, GetParam().multiblock, npoints);
  EXPECT_EQ(nblocks, made.blocks());
  EXPECT_EQ(ndim, 3);
  EXPECT_EQ(npoints, GetParam().multiblock ? 11 : 8);
}

TEST_P(GridMatrix, IsWrittenToTheSameBytesAndReadBack) {
  write_file("grid", made.bytes(false));
  Grid grid;
  grid.read("grid", GetParam());
  grid.write("written", GetParam());
  if (GetParam().iformat != 1) {
    EXPECT_EQ(read_file("written"), made.bytes(true));
  }
  Grid again;
  again.read("written", GetParam());
  expect_the_grid(again);
}

TEST_P(GridMatrix, ReportsATruncationAtEveryByteOnce) {
  const std::string whole = made.bytes(false);
  // In text the last number is still a number after it has lost some of its digits.
  const std::size_t needed = GetParam().iformat == 1 ? whole.find_last_of(' ') + 2 : whole.size();
  for (std::size_t length = 0; length < needed; ++length) {
    write_file("grid", whole.substr(0, length));
    calls.clear();
    Grid grid;
    grid.read("grid", GetParam());
    ASSERT_EQ(count_calls("dispfilereaderror"), 1) << length;
    ASSERT_TRUE(is_open("grid")) << length;
  }
}

INSTANTIATE_TEST_SUITE_P(AllForms, GridMatrix, ::testing::ValuesIn(all_grid_forms()),
                         [](const auto& form) { return name_of(form.param); });

}  // namespace
}  // namespace mod_p3dgrid
