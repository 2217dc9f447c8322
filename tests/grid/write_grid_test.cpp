#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Two blocks, of one and of two points.
Grid small_grid() {
  Grid grid;
  grid.nblocks = 2;
  grid.ndim = 3;
  for (auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) {
    EXPECT_EQ(extents->allocate(2), allocation_done);
    (*extents)(1) = (*extents)(2) = 1;
  }
  grid.jdim(2) = 2;
  EXPECT_EQ(grid.xyz.allocate(3, 3), allocation_done);
  for (int i = 0; i < 9; ++i) grid.xyz.data()[i] = static_cast<float>(i) + 0.25F;
  EXPECT_EQ(grid.iblank.allocate(3), allocation_done);
  for (int i = 0; i < 3; ++i) grid.iblank(i + 1) = i - 1;
  return grid;
}

class WriteGrid : public InScratchFolder {
 protected:
  Grid grid = small_grid();

  /// Writing ends the run, says why, and leaves the file that was there.
  void expect_refused(const std::string& words) {
    write_file("grid", std::string("as it was"));
    try {
      grid.write("grid", {2, false, true, true});
      FAIL() << "written";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
      EXPECT_THAT(end.what(), HasSubstr("cannot write grid grid: "));
    }
    EXPECT_EQ(read_file("grid"), "as it was");
  }
};

TEST_F(WriteGrid, SingleBinaryBytes) {
  grid.write("grid", {2, false, true, true});
  EXPECT_EQ(read_file("grid"), Bytes()
                                   .i4(2)
                                   .i4s({1, 1, 1, 1, 2, 1})
                                   .r4s({.25F, 1.25F, 2.25F})
                                   .i4(-1)
                                   .r4s({3.25F, 6.25F, 4.25F, 7.25F, 5.25F, 8.25F})
                                   .i4s({0, 1})
                                   .str());
}

TEST_F(WriteGrid, DoubleUnformattedBytes) {
  grid.write("grid", {0, true, true, false});
  EXPECT_EQ(read_file("grid"), Bytes()
                                   .i4s({4, 2, 4, 24, 1, 1, 1, 1, 2, 1, 24})
                                   .record(Bytes().r8s({.25, 1.25, 2.25}))
                                   .record(Bytes().r8s({3.25, 6.25, 4.25, 7.25, 5.25, 8.25}))
                                   .str());
}

TEST_F(WriteGrid, TextIsShortAndSingleWhateverThePrecision) {
  grid.xyz(1, 1) = 0.1F;
  for (const bool dblprec : {false, true}) {
    grid.write("grid", {1, dblprec, true, true});
    EXPECT_EQ(read_file("grid"),
              " 2\n 1 1 1 1 2 1\n 0.1 1.25 2.25 -1\n 3.25 6.25 4.25 7.25 5.25 8.25 0 1\n");
  }
  EXPECT_EQ(count_calls("checkallocationerror"), 0);
}

TEST_F(WriteGrid, AnnouncesItselfAndChecksTheWorkArrayOnly) {
  grid.write("grid", {0, false, false, true});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 10, 200, grid, 0, F, -, T, F, -, -)"));
  calls.clear();
  grid.write("grid", {2, true, true, false});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 10, 200, grid, 2, T, -, F, T, -, -)",
                                 "checkallocationerror(0)"));
}

TEST_F(WriteGrid, PrintsALinePerBlockWhateverTheDebugSwitch) {
  p3dsetdebug(false);
  for (const GridForm& form : {unformatted, formatted, binary, GridForm{2, true, true, false}}) {
    messages.clear();
    grid.write("grid", form);
    EXPECT_THAT(messages, ElementsAre(" Writing grid point data for grid 1",
                                      " Writing grid point data for grid 2"));
  }
}

TEST_F(WriteGrid, ClosesItsUnitAndReplacesALongerFile) {
  write_file("grid", std::string(10'000, 'x'));
  grid.write("grid", binary);
  EXPECT_FALSE(is_open("grid"));
  EXPECT_EQ(read_file("grid").size(), 4u + 24 + 36);
}

TEST_F(WriteGrid, BlankingThatIsNotAskedForIsNotWritten) {
  grid.write("without", binary);
  grid.iblank.deallocate();
  grid.write("none", binary);
  EXPECT_EQ(read_file("without"), read_file("none"));
}

TEST_F(WriteGrid, WithoutCountRecordReadsAsItsFirstBlock) {
  grid.write("grid", {0, false, false, false});
  Grid first;
  write_file("copy", read_file("grid"));
  first.read("copy", {0, false, false, false});
  EXPECT_EQ(first.nblocks, 1);
  EXPECT_EQ(vector_of(first.xyz), (std::vector<float>{.25F, 1.25F, 2.25F}));
}

TEST_F(WriteGrid, WithoutBlocksWritesItsHeader) {
  grid.nblocks = 0;
  grid.write("grid", unformatted);
  EXPECT_EQ(read_file("grid"), Bytes().i4s({4, 0, 4, 0, 0}).str());
  EXPECT_TRUE(messages.empty());
}

TEST_F(WriteGrid, ABlockWithoutPointsIsAnEmptyRecord) {
  grid.jdim(1) = 0;
  grid.write("grid", unformatted);
  EXPECT_EQ(read_file("grid"), Bytes()
                                   .i4s({4, 2, 4, 24, 1, 0, 1, 1, 2, 1, 24, 0, 0})
                                   .record(Bytes().r4s({.25F, 3.25F, 1.25F, 4.25F, 2.25F, 5.25F}))
                                   .str());
  grid.write("text", formatted);
  Grid back;
  back.read("text", formatted);
  EXPECT_EQ(back.xyz.extent(2), 2);
}

TEST_F(WriteGrid, UnknownFormatsWriteNothingButCloseTheUnit) {
  write_file("broken", Bytes().i4(4));
  Grid failed;
  failed.read("broken", binary);
  ASSERT_TRUE(is_open("broken"));
  messages.clear();
  grid.write("grid", {4, true, true, true});
  EXPECT_FALSE(exists("grid"));
  EXPECT_FALSE(is_open("broken"));
  EXPECT_TRUE(messages.empty());
}

TEST_F(WriteGrid, MorePointsThanThirtyTwoBitsCountAreCounted) {
  for (auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) {
    extents->deallocate();
    ASSERT_EQ(extents->allocate(3), allocation_done);
    std::ranges::fill(extents->span(), 1000);
  }
  grid.nblocks = 3;
  expect_refused("coordinates for 3 points with 3 values each, the extents ask for 3000000000");
}

TEST_F(WriteGrid, RowsBeyondTheThirdAreNotWritten) {
  Grid wide;
  wide.nblocks = 1;
  wide.ndim = 4;
  for (auto* extents : {&wide.idim, &wide.jdim, &wide.kdim}) {
    ASSERT_EQ(extents->allocate(1), allocation_done);
    (*extents)(1) = 1;
  }
  wide.idim(1) = 2;
  ASSERT_EQ(wide.xyz.allocate(4, 2), allocation_done);
  for (int i = 0; i < 8; ++i) wide.xyz.data()[i] = static_cast<float>(i);
  wide.write("single", binary);
  EXPECT_EQ(read_file("single"), Bytes().i4s({1, 2, 1, 1}).r4s({0, 4, 1, 5, 2, 6}).str());
  wide.write("double", {2, true, true, false});
  EXPECT_EQ(read_file("double"), Bytes().i4s({1, 2, 1, 1}).r8s({0, 4, 1, 5, 2, 6}).str());
}

TEST_F(WriteGrid, ArgumentsThatCannotBeMeantEndTheRunBeforeTheFileIsTouched) {
  grid.jdim(2) = -2;
  expect_refused("extents of block 2 are below 0");
  grid.jdim(2) = 3;
  expect_refused("coordinates for 3 points with 3 values each, the extents ask for 4");
  grid.jdim(2) = 2147483647;
  expect_refused("the extents ask for 2147483648 with 3 each");
  grid.idim(2) = 2;
  expect_refused("extents of block 2 are below 0 or more than 32 bits can count");
  grid.idim(2) = 1;
  grid.jdim(2) = 2;
  grid.nblocks = 3;
  expect_refused("extents of 2 blocks for 3");
  grid.nblocks = 2;
  grid.ndim = 2;
  expect_refused("with 2 values each");
  grid.ndim = 4;
  expect_refused("with 3 values each");
  grid.ndim = 3;
  grid.iblank.deallocate();
  expect_refused("blanking values for 0 points, the extents ask for 3");
}

TEST_F(WriteGrid, ErrorsShowThePathBehindTheName) {
  p3dsetpaths([](std::string_view name) { return "a/long/path/to/" + std::string(name); });
  grid.jdim(2) = -2;
  try {
    grid.write("grid", binary);
    FAIL() << "written";
  } catch (const RunEnded& end) {
    EXPECT_THAT(end.what(), HasSubstr("cannot write grid a/long/path/to/grid: "));
  }
}

TEST_F(WriteGrid, AFullDiskEndsTheRun) {
  try {
    grid.write("/dev/full", unformatted);
    FAIL() << "written";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 2);
    EXPECT_STREQ(end.what(), "cannot write /dev/full: No space left on device");
  }
}

}  // namespace
}  // namespace mod_p3dgrid
