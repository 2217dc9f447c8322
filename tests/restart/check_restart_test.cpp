#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "restart/restart_case.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CheckRestart : public InScratchFolder {
 protected:
  bool halted = false;

  /// Checks a binary grid file against a binary restart file of layout 2.
  void check(const Bytes& grid, const Bytes& restart, bool multiblock = true, int layout = 2,
             int gridformat = 2) {
    write_file("grid", grid);
    write_file("restart", restart);
    try {
      checkp3drstrtheader("grid", gridformat, "restart", 2, false, layout, multiblock);
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 0);
      EXPECT_STREQ(end.what(), "");
      halted = true;
    }
  }
};

TEST_F(CheckRestart, ReturnsInSilenceWhenTheTwoAgree) {
  const Bytes both = Bytes().i4(2).i4s({2, 3, 4, 5, 6, 7});
  check(both, both);
  EXPECT_FALSE(halted);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_FALSE(is_open("grid"));
  EXPECT_FALSE(is_open("restart"));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
}

TEST_F(CheckRestart, ClosesUnit23Too) {
  write_file("spare", std::string("x"));
  test_support::Unit(23, 0).open("spare", recordio::OpenStatus::old);
  const Bytes both = Bytes().i4(1).i4s({2, 3, 4});
  check(both, both);
  EXPECT_FALSE(is_open("spare"));
}

TEST_F(CheckRestart, InOtherEncodingsAndLayouts) {
  write_file("grid", std::string("2\n 2 3 4, 5 6 7\n"));
  write_file("restart", Bytes()
                            .record(Bytes().i4(1).r8(.5).i4(2))
                            .record(Bytes().i4s({2, 3, 4}))
                            .record(Bytes().i4s({5, 6, 7})));
  checkp3drstrtheader("grid", 1, "restart", 0, true, 1, true);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_EQ(nstep, 1);
  EXPECT_EQ(dtau, .5);
}

TEST_F(CheckRestart, ReportsBlockCountsAndComparesNoExtents) {
  check(Bytes().i4(3).i4s({1, 1, 1, 2, 2, 2, 3, 3, 3}), Bytes().i4(2).i4s({1, 1, 1, 9, 9, 9}));
  EXPECT_TRUE(halted);
  EXPECT_THAT(messages, ElementsAre("", " Number of blocks in Grid do not match the Restart file",
                                    " Number of Grid blocks   : 3", " Number of Restart blocks: 2",
                                    "", "   --- CODE HALTED ---"));
  EXPECT_TRUE(is_open("grid"));
  EXPECT_FALSE(is_open("restart"));
}

TEST_F(CheckRestart, ReportsEveryBlockThatDiffers) {
  check(Bytes().i4(4).i4s({1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4}),
        Bytes().i4(4).i4s({1, 1, 1, 2, 2, 5, 3, 3, 3, 10, 4, 123456}));
  EXPECT_TRUE(halted);
  EXPECT_THAT(messages,
              ElementsAre("", " Indecies for block 2 in grid and restart file do not match.",
                          "               i     j     k  ",  //
                          " Grid   :      2     2     2",    //
                          " Restart:      2     2     5",    //
                          "", " Indecies for block 4 in grid and restart file do not match.",
                          "               i     j     k  ",  //
                          " Grid   :      4     4     4",    //
                          " Restart:     10     4123456",    //
                          "", "   --- CODE HALTED ---"));
  EXPECT_FALSE(is_open("grid"));
  EXPECT_FALSE(is_open("restart"));
  // The letters stand above the last digits.
  EXPECT_EQ(messages[2].find('i'), 15u);
  EXPECT_EQ(messages[2].find('k'), 27u);
  EXPECT_EQ(messages[3].size(), 28u);
}

TEST_F(CheckRestart, ReportsExtentsThatNoArrayOfPointsCouldHave) {
  struct Block {
    Bytes extents;
    const char* line;
  };
  for (const Block& block : {Block{Bytes().i4s({70000, 70000, 1}), " 70000 70000     1"},
                             Block{Bytes().i4s({-5, 2, 2}), "    -5     2     2"},
                             Block{Bytes().i4s({1000000, 1000000, 1}), "************     1"}}) {
    for (const bool in_grid : {false, true}) {
      const Bytes ordinary = Bytes().i4s({1, 2, 3, 4});
      const Bytes absurd = Bytes().i4(1).append(block.extents);
      messages.clear();
      halted = false;
      check(in_grid ? absurd : ordinary, in_grid ? ordinary : absurd);
      EXPECT_TRUE(halted);
      EXPECT_EQ(count_calls("dispfilereaderror"), 0);
      const std::string ordinary_line = "     2     3     4";
      EXPECT_THAT(messages,
                  ElementsAre("", " Indecies for block 1 in grid and restart file do not match.",
                              "               i     j     k  ",
                              " Grid   : " + (in_grid ? block.line : ordinary_line),
                              " Restart: " + (in_grid ? ordinary_line : block.line), "",
                              "   --- CODE HALTED ---"));
      EXPECT_FALSE(is_open("grid"));
      EXPECT_FALSE(is_open("restart"));
    }
  }
}

TEST_F(CheckRestart, ReturnsInSilenceWhateverTheExtentsAreThatAgree) {
  for (const Bytes& both :
       {Bytes().i4(3).i4s({1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000}),
        Bytes().i4(1).i4s({70000, 70000, 1}), Bytes().i4(1).i4s({-2, 2, 2})}) {
    calls.clear();
    check(both, both);
    EXPECT_FALSE(halted);
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
    EXPECT_FALSE(is_open("grid"));
    EXPECT_FALSE(is_open("restart"));
  }
}

TEST_F(CheckRestart, ReportsABlockCountThatNothingStandsBehind) {
  check(Bytes().i4(1).i4s({2, 3, 4}), Bytes().i4(1).r4(.5F).i4(100'000), true, 100);
  EXPECT_TRUE(halted);
  EXPECT_THAT(messages,
              ElementsAre("", " Number of blocks in Grid do not match the Restart file",
                          " Number of Grid blocks   : 1", " Number of Restart blocks: 100000", "",
                          "   --- CODE HALTED ---"));
}

TEST_F(CheckRestart, ExtentsTooWideForTheirColumnsAreAsterisks) {
  check(Bytes().i4(1).i4s({1000000, 1, 1}), Bytes().i4(1).i4s({1, 1000000, 1}));
  EXPECT_EQ(messages[3], " Grid   : ******     1     1");
  EXPECT_EQ(messages[4], " Restart:      1******     1");
}

TEST_F(CheckRestart, WithoutBlockCountsComparesTheFirstBlockOnly) {
  // Layout 1 tells a block count all the same.
  const auto restart = [](int k) { return Bytes().i4(1).r4(.5F).i4(2).i4s({2, 3, k, 9, 9, 9}); };
  check(Bytes().i4s({2, 3, 4}), restart(4), false, 1);
  EXPECT_FALSE(halted);
  check(Bytes().i4s({2, 3, 4}), restart(5), false, 1);
  EXPECT_TRUE(halted);
}

TEST_F(CheckRestart, LayoutsWithoutExtentsNeverAgreeWithAGridOfPoints) {
  check(Bytes().i4(1).i4s({2, 3, 4}), Bytes().i4(1).r4(.5F).i4(1), true, 100);
  EXPECT_TRUE(halted);
  EXPECT_EQ(messages[4], " Restart:      0     0     0");
}

TEST_F(CheckRestart, ARestartWithoutBlocksDiffersFromAGridThatHasOne) {
  check(Bytes().i4s({2, 3, 4}), Bytes().i4(1).r4(.5F).i4(0), false, 1);
  EXPECT_TRUE(halted);
  EXPECT_EQ(messages[4], " Restart:      0     0     0");
}

TEST_F(CheckRestart, AFailedGridCountIsToldBeforeTheRestartFileIsTouched) {
  write_file("grid", Bytes());
  checkp3drstrtheader("grid", 0, "missing", 0, false, 2, true);
  EXPECT_THAT(calls, ElementsAre("dispfilereaderror()"));
  EXPECT_TRUE(is_open("grid"));
}

TEST_F(CheckRestart, FailedGridExtentsLeaveTheGridOpen) {
  check(Bytes().i4(1).i4s({2, 3}), Bytes().i4(1).i4s({2, 3, 4}));
  EXPECT_FALSE(halted);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_TRUE(is_open("grid"));
  EXPECT_FALSE(is_open("restart"));
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(CheckRestart, AFailedRestartHeaderIsToldOnceAndComparesNothing) {
  check(Bytes().i4(1).i4s({2, 3, 4}), Bytes().i4(1).i4s({2, 3}));
  EXPECT_FALSE(halted);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_TRUE(is_open("grid"));
  EXPECT_FALSE(is_open("restart"));
}

TEST_F(CheckRestart, AnAbsurdBlockCountInBothIsAFailedRead) {
  check(Bytes().i4(2000000000), Bytes().i4(2000000000));
  EXPECT_FALSE(halted);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
}

TEST_F(CheckRestart, UnknownGridFormatsReadNoGrid) {
  check(Bytes(), Bytes().i4(1).i4s({0, 0, 0}), true, 2, 8);
  EXPECT_FALSE(halted);
  check(Bytes(), Bytes().i4(1).i4s({2, 3, 4}), true, 2, 8);
  EXPECT_TRUE(halted);
}

}  // namespace
}  // namespace mod_p3dgrid
