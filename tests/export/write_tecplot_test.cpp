#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "MOD_P3DReader.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class WriteTecplot : public InScratchFolder {
 protected:
  std::vector<integer> idim{2, 1};
  std::vector<integer> jdim{1, 0};
  std::vector<integer> kdim{1, 3};
  std::vector<double> xyz{.1, .2, .3, 1, 2, 3};
  std::vector<double> qvar{1, 2, 3, 4, 5, 1.0 / 3.0, 1e-20, -1e300, 0, 5};
  std::vector<integer> iblank{1, -2};

  void write(bool useiblank, integer nblocks = 2, const char* name = "tec") {
    writetecplotfile_p3d(name, nblocks, array_view<const double, 2>(xyz.data(), 3, 2),
                         array_view<const double, 2>(qvar.data(), 5, 2), idim, jdim, kdim, iblank,
                         useiblank);
  }
  std::string written(bool useiblank, integer nblocks = 2) {
    write(useiblank, nblocks);
    EXPECT_TRUE(is_open("tec"));
    p3dcloseunit(594);
    return read_file("tec");
  }
};

TEST_F(WriteTecplot, VariablesZonesAndPoints) {
  EXPECT_EQ(written(false),
            " VARIABLES = \"X\", \"Y\", \"Z\", \"U\", \"V\", \"W\", \"P\", \"RHO\"\n"
            "ZONE T=\"ZONE-000001\" I=0002 J=0001 K=0001\n"
            " 0.1 0.2 0.3 1 2 3 4 5\n"
            " 1 2 3 0.3333333333333333 1e-20 -1e+300 0 5\n"
            "ZONE T=\"ZONE-000002\" I=0001 J=0000 K=0003\n");
  EXPECT_THAT(messages, ElementsAre(" Writing to Tecplot file tec..."));
  EXPECT_THAT(calls, IsEmpty());
}

TEST_F(WriteTecplot, EachZoneHoldsThePointsOfItsBlockWithIFastest) {
  p3dsetdebug(false);
  idim = {1, 2};
  jdim = {1, 2};
  kdim = {1, 2};
  xyz.clear();
  qvar.clear();
  iblank.clear();
  std::string lines;
  for (int p = 0; p < 9; ++p) {
    for (int r = 0; r < 3; ++r) xyz.push_back(100 * r + p);
    for (int r = 3; r < 8; ++r) qvar.push_back(100 * r + p);
    iblank.push_back(-p);
    if (p == 1) lines += "ZONE T=\"ZONE-000002\" I=0002 J=0002 K=0002\n";
    for (int r = 0; r < 8; ++r) lines += " " + std::to_string(100 * r + p);
    lines += " " + std::to_string(-p) + "\n";
  }
  writetecplotfile_p3d("tec", 2, array_view<const double, 2>(xyz.data(), 3, 9),
                       array_view<const double, 2>(qvar.data(), 5, 9), idim, jdim, kdim, iblank,
                       true);
  p3dcloseunit(594);
  const std::string text = read_file("tec");
  EXPECT_EQ(text.substr(text.find("\n 0 100") + 1), lines);
  EXPECT_EQ(messages.size(), 1u);
}

TEST_F(WriteTecplot, BlankingIsTheLastColumn) {
  EXPECT_EQ(written(true),
            " VARIABLES = \"X\", \"Y\", \"Z\", \"U\", \"V\", \"W\", \"P\", \"RHO\",\"IBLANK\"\n"
            "ZONE T=\"ZONE-000001\" I=0002 J=0001 K=0001\n"
            " 0.1 0.2 0.3 1 2 3 4 5 1\n"
            " 1 2 3 0.3333333333333333 1e-20 -1e+300 0 5 -2\n"
            "ZONE T=\"ZONE-000002\" I=0001 J=0000 K=0003\n");
}

TEST_F(WriteTecplot, WithoutBlocksHoldsTheVariablesOnlyAndStaysOpen) {
  for (const integer nblocks : {0, -1}) {
    EXPECT_EQ(written(false, nblocks),
              " VARIABLES = \"X\", \"Y\", \"Z\", \"U\", \"V\", \"W\", \"P\", \"RHO\"\n");
  }
}

TEST_F(WriteTecplot, Block12OfFifteenPoints) {
  std::vector<integer> i(12, 0);
  std::vector<integer> j(12, 1);
  std::vector<integer> k(12, 3);
  i[11] = 5;
  xyz.resize(45);
  qvar.resize(75);
  writetecplotfile_p3d("tec", 12, array_view<const double, 2>(xyz.data(), 3, 15),
                       array_view<const double, 2>(qvar.data(), 5, 15), i, j, k, iblank, false);
  p3dcloseunit(594);
  const std::string text = read_file("tec");
  const std::string zone = "ZONE T=\"ZONE-000012\" I=0005 J=0001 K=0003\n";
  const std::size_t at = text.find(zone);
  ASSERT_NE(at, text.npos);
  EXPECT_EQ(std::count(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), '\n'), 16);
}

TEST_F(WriteTecplot, ExtentsBeyondTheirFieldsAreAsterisks) {
  idim = {12345};
  jdim = {0};
  kdim = {10000};
  EXPECT_THAT(written(false, 1), HasSubstr("ZONE T=\"ZONE-000001\" I=**** J=0000 K=****\n"));
}

TEST_F(WriteTecplot, ArraysOfOtherWidthsAreWrittenAsTheyAre) {
  writetecplotfile_p3d("tec", 1, array_view<const double, 2>(xyz.data(), 1, 2),
                       array_view<const double, 2>(qvar.data(), 2, 2), idim, jdim, kdim, {}, false);
  p3dcloseunit(594);
  EXPECT_THAT(read_file("tec"), HasSubstr("\n 0.1 1 2\n 0.2 3 4\n"));
  std::vector<double> wide(20'000, 0.123456789012345);
  writetecplotfile_p3d("tec", 1, array_view<const double, 2>(wide.data(), 5000, 2),
                       array_view<const double, 2>(wide.data(), 0, 2), idim, jdim, kdim, {}, false);
  p3dcloseunit(594);
  const std::string text = read_file("tec");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
  EXPECT_EQ(text.size(), text.find("\n ", 60) + 1 + 2 * (5000 * 18 + 1));
}

TEST_F(WriteTecplot, EveryNanIsTheSamePlainWord) {
  const auto of_bits = [](std::uint64_t bits) { return std::bit_cast<double>(bits); };
  const double usual = std::numeric_limits<double>::quiet_NaN();
  xyz = {usual, -usual, of_bits(0x7ff8'0000'0000'1234), 1, 2, 3};
  // What 0/0 gives, a signalling one, those of single precision widened, and infinities beside
  // them.
  qvar = {of_bits(0xfff8'0000'0000'0000),
          of_bits(0x7ff0'0000'0000'0001),
          of_bits(0xffff'ffff'ffff'ffff),
          of_bits(0x7ff8'0000'2000'0000),
          std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(),
          0,
          0,
          0,
          0};
  EXPECT_THAT(written(true), HasSubstr("\n NaN NaN NaN NaN NaN NaN NaN inf 1\n"
                                       " 1 2 3 -inf 0 0 0 0 -2\n"));
}

TEST_F(WriteTecplot, ASecondCallClosesTheFileOfTheFirstAndBeginsAnew) {
  write(false, 2, "first");
  write(false, 0, "second");
  EXPECT_THAT(read_file("first"), HasSubstr("ZONE-000002"));
  EXPECT_FALSE(is_open("first"));
  write(false, 2);
  EXPECT_EQ(written(false, 0).find("ZONE"), std::string::npos);
}

TEST_F(WriteTecplot, NamesAreShownWithoutTheBlanksAroundThem) {
  write(false, 0, "  tec");
  EXPECT_THAT(messages, ElementsAre(" Writing to Tecplot file tec..."));
}

TEST_F(WriteTecplot, TheMessageShowsTheNameAsItIs) {
  write(false, 0, "t\x1b[2J\nec");
  EXPECT_THAT(messages, ElementsAre(" Writing to Tecplot file t\x1b[2J\nec..."));
}

using WriteTecplotDeathTest = WriteTecplot;

TEST_F(WriteTecplotDeathTest, IsCompleteWhenTheRunEnds) {
  const std::string expected = written(false);
  EXPECT_EXIT(
      {
        write(false);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(read_file("tec"), expected);
}

TEST_F(WriteTecplot, ArraysTooSmallEndTheRunBeforeTheFileIsTouched) {
  const auto expect_refused = [&](bool useiblank, const std::string& words) {
    try {
      write(useiblank);
      FAIL() << "written";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
    EXPECT_FALSE(exists("tec"));
  };
  iblank.pop_back();
  expect_refused(true, "iblank holds 1 points, 2 are needed");
  idim[0] = 3;
  expect_refused(false, "xyz holds 2 points, 3 are needed");
  xyz.resize(9);
  try {
    writetecplotfile_p3d("tec", 2, array_view<const double, 2>(xyz.data(), 3, 3),
                         array_view<const double, 2>(qvar.data(), 5, 2), idim, jdim, kdim, {},
                         false);
    FAIL() << "written";
  } catch (const RunEnded& end) {
    EXPECT_THAT(end.what(), HasSubstr("qvar holds 2 points, 3 are needed"));
  }
  idim = jdim = {40000, 40000};
  kdim = {1, 1};
  expect_refused(false, "xyz holds 2 points, 3200000000 are needed");
  idim[0] = -3;
  expect_refused(false, "extents of block 1 are below 0");
  idim.clear();
  expect_refused(false, "extents of 0 blocks for 2");
}

TEST_F(WriteTecplot, AFullDiskIsAnErrorOfTheRun) {
  write(false, 2, "/dev/full");
  EXPECT_THROW(p3dcloseunit(594), RunEnded);
}

}  // namespace
}  // namespace mod_p3dgrid
