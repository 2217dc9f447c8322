#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;

constexpr int unset = -77;

class ReadGridHeader : public InScratchFolder {
 protected:
  integer nblocks = unset;
  integer ndim = unset;
  integer npoints = unset;

  template <class Content>
  void read(const Content& bytes, int iformat, bool multiblock) {
    write_file("grid", bytes);
    readp3dgridheader("grid", iformat, nblocks, ndim, multiblock, npoints);
  }
  void read_count(const Bytes& bytes, int iformat, bool multiblock) {
    write_file("grid", bytes);
    readp3dgridheader("grid", iformat, nblocks, ndim, multiblock);
  }
};

TEST_F(ReadGridHeader, PrintsAndAnnouncesNothingAndChecksOneAllocation) {
  read(Bytes().i4(2).i4s({2, 2, 2, 3, 1, 1}), 2, true);
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(ndim, 3);
  EXPECT_EQ(npoints, 11);
  EXPECT_TRUE(messages.empty());
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
  EXPECT_FALSE(is_open("grid"));
}

TEST_F(ReadGridHeader, WithoutPointsReadsTheBlockCountAlone) {
  read_count(Bytes().record(Bytes().i4(2)).i4(9999), 0, true);  // the second record is damaged
  EXPECT_EQ(nblocks, 2);
  EXPECT_TRUE(calls.empty());
  EXPECT_FALSE(is_open("grid"));
}

TEST_F(ReadGridHeader, WithoutCountRecordThereIsOneBlock) {
  read(Bytes().record(Bytes().i4s({4, 3, 2})), 0, false);
  EXPECT_EQ(nblocks, 1);
  EXPECT_EQ(npoints, 24);
  read_count(Bytes(), 2, false);
  EXPECT_EQ(nblocks, 1);
}

TEST_F(ReadGridHeader, PointsAreSummedInThirtyTwoBits) {
  read(Bytes().i4(2).i4s({65536, 65536, 1, 3, 1, 1}), 2, true);
  EXPECT_EQ(npoints, 3);
  read(Bytes().i4(2).i4s({2147483647, 1, 1, 2, 1, 1}), 2, true);
  EXPECT_EQ(npoints, -2147483647);
  read(Bytes().i4(1).i4s({-3, 2, 1}), 2, true);
  EXPECT_EQ(npoints, -6);
}

TEST_F(ReadGridHeader, WithoutBlocksThereAreNoPoints) {
  for (const int count : {0, -4}) {
    read(Bytes().record(Bytes().i4(count)).record(Bytes()), 0, true);
    EXPECT_EQ(nblocks, count);
    EXPECT_EQ(npoints, 0);
    npoints = unset;
  }
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(ReadGridHeader, AFailedCountSetsNothing) {
  read(Bytes().i4(4).i4(2), 0, true);
  EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  EXPECT_EQ(nblocks, unset);
  EXPECT_EQ(npoints, unset);
  EXPECT_EQ(ndim, 3);
  EXPECT_TRUE(is_open("grid"));
}

TEST_F(ReadGridHeader, FailedExtentsSetTheCountOnly) {
  read(Bytes().i4(2).i4s({2, 2, 2}), 2, true);
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "dispfilereaderror()"));
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(npoints, unset);
  EXPECT_TRUE(is_open("grid"));
  EXPECT_EQ(p3dlastfailure().unit, 22);
}

TEST_F(ReadGridHeader, RepeatsAndSlashesOfTextStandForManyExtents) {
  read(std::string(" 20000\n 60000*2\n"), 1, true);
  EXPECT_EQ(npoints, 160'000);
  read(std::string(" 20000\n 2 2 2 /\n"), 1, true);
  EXPECT_EQ(npoints, 8);
  read(std::string(" 1048576\n /\n"), 1, true);
  EXPECT_EQ(npoints, 0);
  EXPECT_EQ(nblocks, 1'048'576);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(ReadGridHeader, AnAbsurdCountIsAFailedReadBeforeMemoryIsTaken) {
  read(Bytes().i4(2147483647).i4s({2, 2, 2}), 2, true);
  EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  EXPECT_EQ(nblocks, 2147483647);
  EXPECT_EQ(npoints, unset);
}

TEST_F(ReadGridHeader, AMissingFileIsAnErrorOfTheRun) {
  EXPECT_THROW(readp3dgridheader("missing", 0, nblocks, ndim, true), RunEnded);
}

TEST_F(ReadGridHeader, UnknownFormatsOpenAndReadNothing) {
  readp3dgridheader("missing", 5, nblocks, ndim, true, npoints);
  EXPECT_EQ(nblocks, 1);
  EXPECT_EQ(ndim, 3);
  EXPECT_EQ(npoints, 0);
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
}

TEST_F(ReadGridHeader, RunsWhileAFailedReadHasLeftTheGridUnitOpen) {
  write_file("broken", Bytes().i4(4));
  Grid grid;
  grid.read("broken", {2, false, true, false});
  read(Bytes().i4(1).i4s({2, 2, 2}), 2, true);
  EXPECT_EQ(npoints, 8);
  EXPECT_TRUE(is_open("broken"));
}

}  // namespace
}  // namespace mod_p3dgrid
