#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "recordio/unformatted_record.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr GridForm blanked(GridForm form) {
  return {form.iformat, form.dblprec, form.multiblock, true};
}
constexpr GridForm in_double(GridForm form) {
  return {form.iformat, true, form.multiblock, form.iblank};
}
constexpr GridForm uncounted(GridForm form) {
  return {form.iformat, form.dblprec, false, form.iblank};
}

class ReadGrid : public InScratchFolder {
 protected:
  Grid grid;

  template <class Content>
  void read(const Content& bytes, const GridForm& form) {
    write_file("grid", bytes);
    grid.read("grid", form);
  }

  /// The read failed once, the unit stays open, and the reason holds `words`.
  static void expect_failed(const std::string& words) {
    EXPECT_EQ(count_calls("dispfilereaderror"), 1);
    EXPECT_TRUE(is_open("grid"));
    EXPECT_THAT(p3dlastfailure().describe(), HasSubstr(words));
  }
};

/// Header of a binary grid: block count and extents.
Bytes header(std::initializer_list<std::int32_t> extents) {
  return Bytes().i4(static_cast<std::int32_t>(extents.size() / 3)).i4s(extents);
}

TEST_F(ReadGrid, AnnouncesItselfFirstAndThenChecksEachAllocation) {
  const std::string announced = "dispreadwrite(1, 10, 200, grid, ";
  for (const auto& [form, arguments, allocations] :
       {std::tuple{binary, "2, F, -, F, T, -, -)", 2},
        {blanked(binary), "2, F, -, T, T, -, -)", 3},
        {in_double(binary), "2, T, -, F, T, -, -)", 3},
        {in_double(blanked(unformatted)), "0, T, -, T, T, -, -)", 4},
        {in_double(blanked(uncounted(formatted))), "1, T, -, T, F, -, -)", 3}}) {
    calls.clear();
    Grid fresh;
    write_file("grid", HandMadeGrid(form).bytes(false));
    fresh.read("grid", form);
    std::vector<std::string> expected{announced + arguments};
    expected.resize(static_cast<std::size_t>(1 + allocations), "checkallocationerror(0)");
    EXPECT_EQ(calls, expected);
  }
}

TEST_F(ReadGrid, IsAnnouncedBeforeTheFileIsOpened) {
  EXPECT_THROW(grid.read("missing", binary), RunEnded);
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(1, 10, 200, missing, 2, F, -, F, T, -, -)"));
  EXPECT_EQ(grid.ndim, 3);
}

TEST_F(ReadGrid, PrintsBlockCountDimensionsAndProgress) {
  read(HandMadeGrid(binary).bytes(false), binary);
  EXPECT_THAT(
      messages,
      ElementsAre(" Number of grids is 2", " Dimensions of grid     1 is     2    2    2",
                  " Dimensions of grid     2 is     3    1    1",
                  " Reading grid point data for grid 1", " Reading grid point data for grid 2"));
}

TEST_F(ReadGrid, PrintsOnlyTheBlockCountWithoutDebugging) {
  p3dsetdebug(false);
  read(HandMadeGrid(binary).bytes(false), binary);
  EXPECT_THAT(messages, ElementsAre(" Number of grids is 2"));
}

TEST_F(ReadGrid, DimensionsTooWideForTheirColumnsAreAsterisks) {
  read(Bytes().i4(1).i4s({100000, 0, 1}), binary);
  EXPECT_EQ(messages.at(1), " Dimensions of grid     1 is *****    0    1");
}

TEST_F(ReadGrid, ClosesItsUnit) {
  read(HandMadeGrid(unformatted).bytes(false), unformatted);
  EXPECT_FALSE(is_open("grid"));
}

TEST_F(ReadGrid, DoublePrecisionReadAsSingleIsSeenWhereWholeRecordsAreWanted) {
  const Bytes doubles = Bytes().r8s({1, 2, 3, 4, 5, 6});
  const std::string bytes =
      Bytes().record(Bytes().i4(1)).record(Bytes().i4s({2, 1, 1})).record(doubles).str();
  read(bytes, unformatted);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_NE(vector_of(grid.xyz), (std::vector<float>{1, 3, 5, 2, 4, 6}));
  p3dsetwholerecords(true);
  grid = Grid();
  read(bytes, unformatted);
  expect_failed("grid: record 3, byte 60: found a record of 48 bytes, expected one of 24");
  calls.clear();
  for (const bool multiblock : {false, true}) {
    for (const bool iblank : {false, true}) {
      const GridForm form{0, true, multiblock, iblank};
      Grid whole;
      write_file("grid", HandMadeGrid(form).bytes(false));
      whole.read("grid", form);
    }
  }
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(ReadGrid, ABlockWithoutPointsStandsBetweenOthers) {
  read(header({1, 1, 1, 3, 0, 2, 2, 1, 1}).r4s({1, 2, 3}).r4s({4, 5, 6, 7, 8, 9}), binary);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(vector_of(grid.xyz), (std::vector<float>{1, 2, 3, 4, 6, 8, 5, 7, 9}));
}

TEST_F(ReadGrid, ABlockWithoutPointsIsARecordAllTheSame) {
  read(Bytes()
           .record(Bytes().i4(2))
           .record(Bytes().i4s({0, 5, 5, 1, 1, 1}))
           .record(Bytes())
           .record(Bytes().r4s({1, 2, 3})),
       unformatted);
  EXPECT_EQ(vector_of(grid.xyz), (std::vector<float>{1, 2, 3}));
  Grid text_grid;
  write_file("grid", std::string("2\n0 5 5 1 1 1\n this line is the first block's\n1 2 3\n"));
  text_grid.read("grid", formatted);
  EXPECT_EQ(vector_of(text_grid.xyz), (std::vector<float>{1, 2, 3}));
}

TEST_F(ReadGrid, BlankingThatIsNotAskedForIsSkippedInUnformattedRecords) {
  read(HandMadeGrid(blanked(unformatted)).bytes(false), unformatted);
  EXPECT_EQ(vector_of(grid.xyz), HandMadeGrid(unformatted).xyz());
  EXPECT_FALSE(grid.iblank.allocated());
}

TEST_F(ReadGrid, BlankingThatIsNotAskedForIsTakenForCoordinatesInBinaryFiles) {
  // 1 point, blanked with the bits of 2.0; then 1 point more.
  const Bytes bytes = header({1, 1, 1, 1, 1, 1}).r4s({1, 1, 1}).i4(0x40000000).r4s({3, 4, 5}).i4(0);
  read(bytes, binary);
  EXPECT_EQ(vector_of(grid.xyz), (std::vector<float>{1, 1, 1, 2, 3, 4}));
}

TEST_F(ReadGrid, BlankingThatIsNotAskedForIsTakenForCoordinatesInTextIfItStandsOnOtherLines) {
  read(std::string("2\n1 1 1 1 1 1\n1 1 1 7\n8\n9 10 11\n"), formatted);
  EXPECT_EQ(vector_of(grid.xyz), (std::vector<float>{1, 1, 1, 8, 9, 10}));
}

TEST_F(ReadGrid, BlankingNotReachedByAFailedReadStaysOne) {
  const std::string whole = HandMadeGrid(blanked(binary)).bytes(false);
  read(whole.substr(0, whole.size() - 4), blanked(binary));
  expect_failed("end of the file");
  std::vector<int> expected = HandMadeGrid(blanked(binary)).iblank();
  // The second block's blanking is read as far as it goes, or not at all.
  const std::vector<int> got = vector_of(grid.iblank);
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t p = 0; p < 8; ++p) EXPECT_EQ(got[p], expected[p]);
  EXPECT_EQ(got.back(), 1);
}

TEST_F(ReadGrid, FormattedDoublePrecisionIsReadAsTextIntoSinglePrecision) {
  read(HandMadeGrid(in_double(formatted)).bytes(false), in_double(formatted));
  EXPECT_EQ(vector_of(grid.xyz), HandMadeGrid(formatted).xyz());
  EXPECT_EQ(count_calls("checkallocationerror"), 2);
}

TEST_F(ReadGrid, DoublePrecisionIsRoundedToNearest) {
  read(Bytes().i4s({1, 1, 1}).r8s({1.0 + 0x1p-24, 1.0 + 0x1.8p-23, 1e300}),
       uncounted(in_double(binary)));
  EXPECT_EQ(vector_of(grid.xyz),
            (std::vector<float>{1.0F, 1.0F + 0x1p-22F, std::numeric_limits<float>::infinity()}));
}

TEST_F(ReadGrid, RepeatedAndNullExtentsOfText) {
  read(std::string("2\n2*1 2 , 3*1\n 1 2 3 4 5 6\n7 8 9\n"), formatted);
  EXPECT_EQ(vector_of(grid.kdim), (std::vector{2, 1}));
  Grid null_extent;
  write_file("grid", std::string("1\n2,,2\n\n"));
  null_extent.read("grid", formatted);
  EXPECT_EQ(vector_of(null_extent.jdim), (std::vector{0}));
}

TEST_F(ReadGrid, WithoutABlockReadsAnEmptyDimensionRecord) {
  read(Bytes().record(Bytes().i4(0)).record(Bytes()), unformatted);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(grid.nblocks, 0);
  EXPECT_EQ(grid.idim.size(), 0);
  EXPECT_TRUE(grid.idim.allocated());
  EXPECT_EQ(grid.xyz.extent(1), 3);
  EXPECT_EQ(grid.xyz.extent(2), 0);
}

TEST_F(ReadGrid, ANegativeBlockCountIsPassedOnAndSizesNothing) {
  read(Bytes().record(Bytes().i4(-3)).record(Bytes()), unformatted);
  EXPECT_EQ(grid.nblocks, -3);
  EXPECT_EQ(grid.jdim.size(), 0);
  EXPECT_TRUE(grid.xyz.allocated());
}

TEST_F(ReadGrid, AFailedBlockCountLeavesTheArgumentsAlone) {
  read(Bytes().i4(4).i4(2), unformatted);
  expect_failed("record 1");
  EXPECT_EQ(grid.nblocks, -77);
  EXPECT_EQ(grid.ndim, 3);
  EXPECT_FALSE(grid.idim.allocated());
  EXPECT_TRUE(messages.empty());
}

TEST_F(ReadGrid, FailedExtentsLeaveTheirArraysAllocated) {
  read(Bytes().i4(2).i4s({2, 2, 2, 3}), binary);
  expect_failed("record 2");
  EXPECT_EQ(grid.nblocks, 2);
  EXPECT_EQ(grid.idim.size(), 2);
  EXPECT_EQ(grid.kdim.size(), 2);
  EXPECT_FALSE(grid.xyz.allocated());
}

TEST_F(ReadGrid, ExtentsCutShortHaveTheirArraysHoweverManyBlocksThereAre) {
  constexpr integer count = 100'000;
  for (const auto& [form, bytes] :
       {std::pair{binary, Bytes().i4(count).i4s({2, 3, 4, 5, 6}).str() + "xyz"},
        {unformatted, Bytes().record(Bytes().i4(count)).i4(12 * count).i4s({2, 3, 4, 5, 6}).str()},
        {formatted, std::string("100000\n2 3 4 5 6\n")}}) {
    calls.clear();
    Grid cut;
    write_file("grid", bytes);
    cut.read("grid", form);
    expect_failed("end of the file");
    EXPECT_EQ(count_calls("checkallocationerror"), 1);
    ASSERT_EQ(cut.idim.size(), count);
    ASSERT_EQ(cut.kdim.size(), count);
    EXPECT_EQ(cut.idim(2), 5);
    EXPECT_EQ(cut.jdim(2), 6);
    EXPECT_EQ(cut.kdim(2), 0);
    EXPECT_EQ(cut.idim(count), 0);
    EXPECT_FALSE(cut.xyz.allocated());
  }
}

TEST_F(ReadGrid, FailedCoordinatesKeepWhatWasRead) {
  const std::string whole = HandMadeGrid(binary).bytes(false);
  read(whole.substr(0, whole.size() - 9 * 4), binary);
  expect_failed("expected");
  ASSERT_EQ(grid.xyz.size(), 33);
  const std::vector<float> expected = HandMadeGrid(binary).xyz();
  for (std::size_t i = 0; i < 24; ++i) EXPECT_EQ(grid.xyz.data()[i], expected[i]);
}

TEST_F(ReadGrid, FailedDoublePrecisionLeavesCoordinatesAllocatedAndUnset) {
  const std::string whole = HandMadeGrid(in_double(binary)).bytes(false);
  read(whole.substr(0, whole.size() - 1), in_double(binary));
  expect_failed("expected");
  EXPECT_EQ(grid.xyz.size(), 33);
}

TEST_F(ReadGrid, TheNextReadBeginsAnewAfterAFailedOne) {
  read(Bytes().i4(4), binary);
  EXPECT_TRUE(is_open("grid"));
  Grid next;
  write_file("other", HandMadeGrid(binary).bytes(false));
  next.read("other", binary);
  EXPECT_FALSE(is_open("grid"));
  EXPECT_EQ(vector_of(next.xyz), HandMadeGrid(binary).xyz());
}

TEST_F(ReadGrid, AHostThatThrowsFromAFailedReadLosesNothing) {
  on_read_error = [] { throw std::runtime_error("host"); };
  EXPECT_THROW(read(Bytes().i4(4), binary), std::runtime_error);
  EXPECT_TRUE(is_open("grid"));
  p3dcloseunit(13);
  EXPECT_FALSE(is_open("grid"));
}

TEST_F(ReadGrid, AllocatedArgumentsAreReportedAndNeverOverrun) {
  ASSERT_EQ(grid.idim.allocate(1), allocation_done);
  read(HandMadeGrid(binary).bytes(false), binary);
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(1, 10, 200, grid, 2, F, -, F, T, -, -)",
                                 "checkallocationerror(1)", "dispfilereaderror()"));
  // The group of arrays ends with the one that failed.
  EXPECT_FALSE(grid.jdim.allocated());
}

TEST_F(ReadGrid, AllocatedCoordinatesServeAsFarAsTheyAreLargeEnough) {
  ASSERT_EQ(grid.xyz.allocate(3, 20), allocation_done);
  read(HandMadeGrid(binary).bytes(false), binary);
  EXPECT_EQ(calls.back(), "checkallocationerror(1)");
  const std::vector<float> expected = HandMadeGrid(binary).xyz();
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(grid.xyz.data()[i], expected[i]);
  for (const auto& [rows, points] : {std::pair{3, 10}, {2, 20}, {4, 20}}) {
    Grid small;
    calls.clear();
    ASSERT_EQ(small.xyz.allocate(rows, points), allocation_done);
    small.read("grid", binary);
    EXPECT_EQ(calls.back(), "dispfilereaderror()");
  }
}

TEST_F(ReadGrid, AllocatedBlankingTooSmallForThePointsIsAFailedRead) {
  ASSERT_EQ(grid.iblank.allocate(10), allocation_done);
  read(HandMadeGrid(blanked(binary)).bytes(false), blanked(binary));
  EXPECT_EQ(calls.back(), "dispfilereaderror()");
}

TEST_F(ReadGrid, UnknownFormatsOpenAndReadNothing) {
  for (const int iformat : {3, -1, 200}) {
    calls.clear();
    messages.clear();
    Grid none;
    none.read("missing", {iformat, true, true, true});
    EXPECT_EQ(none.nblocks, 1);
    EXPECT_EQ(none.ndim, 3);
    EXPECT_EQ(none.idim.size(), 1);
    EXPECT_EQ(none.xyz.extent(1), 3);
    EXPECT_EQ(none.xyz.extent(2), 0);
    EXPECT_THAT(messages, ElementsAre(" Number of grids is 1",
                                      " Dimensions of grid     1 is     0    0    0"));
    EXPECT_EQ(count_calls("checkallocationerror"), 3);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  }
}

TEST_F(ReadGrid, UnknownFormatsCloseTheUnitAllTheSame) {
  read(Bytes().i4(4), binary);
  ASSERT_TRUE(is_open("grid"));
  Grid none;
  none.read("grid", {7, false, true, false});
  EXPECT_FALSE(is_open("grid"));
}

TEST_F(ReadGrid, ExtentsBelowZeroAreAFailedRead) {
  read(header({2, -2, -2}).r4s({1, 2, 3}), binary);
  expect_failed("block 1 of 2 x -2 x -2 points, expected extents from 0 on");
  EXPECT_FALSE(grid.xyz.allocated());
}

TEST_F(ReadGrid, PointsThatWrapAroundAreAFailedRead) {
  read(header({65536, 65536, 1}), binary);  // 2^32 would be 0 points
  expect_failed("65536 x 65536 x 1");
  Grid sum;
  calls.clear();
  write_file("grid", header({1, 1, 1, 2147483647, 1, 1}).str());
  sum.read("grid", binary);
  expect_failed("a file far too short for that, expected 2147483648 points");
  Grid product;
  calls.clear();
  write_file("grid", header({2147483647, 2147483647, 2147483647}).str());
  product.read("grid", binary);
  expect_failed("block 1");
}

TEST_F(ReadGrid, CoordinatesLeftOutOfTextAreZero) {
  for (const char* text :
       {"1\n2 2 1\n1 2 3 /\n", "1\n2 2 1\n1 2 3 9*\n", "1\n2 2 1\n1,2,3,,,,,,,,,,\n"}) {
    Grid nulls;
    write_file("grid", std::string(text));
    nulls.read("grid", formatted);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(vector_of(nulls.xyz), (std::vector<float>{1, 0, 0, 2, 0, 0, 3, 0, 0, 0, 0, 0}));
  }
}

TEST_F(ReadGrid, AFewRepeatsMayStandForManyPoints) {
  read(std::string("1\n300 200 100\n18000000*0.5\n"), formatted);
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(grid.xyz.extent(2), 6'000'000);
  EXPECT_EQ(grid.xyz(3, 6'000'000), 0.5F);
}

TEST_F(ReadGrid, TheRestOfARecordThatASlashEndsIsZero) {
  read(std::string("300 200 100\n1 2 3 /\n"), uncounted(formatted));
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  ASSERT_EQ(grid.xyz.extent(2), 6'000'000);
  EXPECT_EQ(grid.xyz(1, 1), 1);
  EXPECT_EQ(grid.xyz(1, 2), 2);
  EXPECT_EQ(grid.xyz(1, 3), 3);
  for (const integer c : {1, 2, 3}) EXPECT_EQ(grid.xyz(c, 6'000'000), 0) << c;
  EXPECT_EQ(std::ranges::count(grid.xyz.span(), 0.F), 17'999'997);
}

TEST_F(ReadGrid, BlankingLeftOutOfTextStaysOne) {
  read(std::string("2 2 1\n12*5 2 , , /\n"), blanked(uncounted(formatted)));
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(vector_of(grid.iblank), (std::vector{2, 1, 1, 1}));
}

TEST_F(ReadGrid, FilesCutShortAreReadAsFarAsTheyGoIfAPartIsLeft) {
  // 100,000,000 points would be 1.2 GB. A sixteenth is 75,000,000 bytes.
  const auto read_with = [&](std::uintmax_t bytes) {
    Grid cut;
    calls.clear();
    const std::string header = Bytes().i4(1).i4s({500, 500, 400}).str();
    write_file("grid", header);
    std::filesystem::resize_file("grid", header.size() + bytes);
    cut.read("grid", binary);
    EXPECT_EQ(count_calls("dispfilereaderror"), 1);
    return cut.xyz.allocated();
  };
  EXPECT_TRUE(read_with(75'000'000));
  EXPECT_FALSE(read_with(74'999'990));
}

/// Peak resident memory of the process in KiB.
long peak_memory() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST_F(ReadGrid, HeadersThatAnnounceGigabytesAreRefusedBeforeMemoryIsTaken) {
  for (const GridForm& form : {binary, formatted}) {
    for (const bool in_count : {false, true}) {
      calls.clear();
      Grid huge;
      const std::string text_header = in_count ? "2000000000\n" : "1\n1000 1000 2000\n";
      write_file("grid", form.iformat == 1 ? text_header
                         : in_count        ? Bytes().i4(2000000000).str()
                                           : header({1000, 1000, 2000}).str());
      huge.read("grid", blanked(form));
      expect_failed("a file far too short");
      EXPECT_FALSE(huge.xyz.allocated());
      EXPECT_EQ(huge.nblocks, in_count ? 2000000000 : 1);
      EXPECT_EQ(huge.idim.allocated(), !in_count);
    }
  }
}

TEST_F(ReadGrid, AnAbsurdHeaderTakesNoMemory) {
  // In a process of its own, whose peak is not that of an earlier test.
  EXPECT_EXIT(
      {
        const long before = peak_memory();
        read(Bytes().i4(1).i4s({1000, 1000, 2000}), blanked(binary));
        std::exit(count_calls("dispfilereaderror") == 1 && peak_memory() - before < 20'000 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

/// Reads a file that announces 1 GiB of coordinates in its second block and ends there. True if the
/// arrays are there, the first block has arrived, and no memory was taken for what has not.
bool keeps_the_first_of_two_blocks(const GridForm& form) {
  constexpr integer points = 446 * 446 * 446;
  std::string bytes = "2\n1 1 1 446 446 446\n1 2 3 1*9\n4 5\n";
  if (form.iformat != 1) {
    bytes = header({1, 1, 1, 446, 446, 446}).r4s({1, 2, 3}).str();
    if (form.iblank) bytes += Bytes().i4(9).str();
    bytes += Bytes().r4s({4, 5}).str();
  }
  constexpr long most_kilobytes = 300'000;
  write_file("grid", bytes);
  const long before = peak_memory();
  Grid grid;
  grid.read("grid", form);
  return count_calls("dispfilereaderror") == 1 && grid.xyz.extent(2) == 1 + points &&
         grid.xyz.allocated() && grid.xyz(2, 1) == 2 && grid.xyz(3, 1) == 3 &&
         grid.xyz(1, 2) == 4 && grid.xyz(1, 3) == 5 && peak_memory() - before < most_kilobytes;
}

TEST_F(ReadGrid, ArraysOfAGigabyteThatTheFileDoesNotHoldAreAllocatedAndNotTouched) {
  for (const GridForm& form : {binary, formatted}) {
    // In a process of its own, whose peak is not that of an earlier test.
    EXPECT_EXIT(std::exit(keeps_the_first_of_two_blocks(form) ? 0 : 1),
                ::testing::ExitedWithCode(0), "")
        << form.iformat;
  }
}

TEST_F(ReadGrid, BlankingIsOneThroughoutWhateverTheFileDoesNotHold) {
  for (const GridForm& form : {blanked(binary), blanked(formatted), blanked(in_double(binary))}) {
    Grid cut;
    write_file("grid", form.iformat == 1 ? std::string("1\n300 200 100\n5 ")
                                         : header({300, 200, 100}).i4(7).str());
    cut.read("grid", form);
    EXPECT_EQ(cut.xyz.extent(2), 6'000'000);
    EXPECT_EQ(std::ranges::count(cut.iblank.span(), 1), 6'000'000);
  }
}

TEST_F(ReadGrid, ABlockCountThatALargeFileCannotHoldTakesNoMemory) {
  write_file("grid", Bytes().i4(60'000'000).str() + std::string(50'000'000, 'x'));
  grid.read("grid", binary);
  expect_failed("the extents of 60000000 blocks");
  EXPECT_FALSE(grid.idim.allocated());
}

TEST_F(ReadGrid, AnExtentRecordThatIsNotThereTakesNoMemory) {
  for (const auto& [form, bytes] :
       {std::pair{binary, Bytes().i4(5'000'000).str()},
        {unformatted, Bytes().record(Bytes().i4(5'000'000)).i4(12).i4s({1, 1, 1}).str()},
        {formatted, std::string("5000000\n/\n")},
        // A repeat count stands for the extents, but blocks have lines of their own.
        {formatted, std::string("5000000\n15000000*1\n1 2 3\n")}}) {
    calls.clear();
    messages.clear();
    read(bytes, form);
    expect_failed("the extents of 5000000 blocks");
    EXPECT_FALSE(grid.idim.allocated());
    EXPECT_EQ(messages.size(), 1U);
  }
}

TEST_F(ReadGrid, OtherEncodingsThanToldAreFailedReads) {
  struct Told {
    GridForm file;
    GridForm told;
  };
  for (const auto& [file, told] : {Told{formatted, unformatted},
                                   {unformatted, formatted},
                                   {binary, formatted},
                                   {formatted, binary},
                                   {binary, unformatted},
                                   {unformatted, binary}}) {
    calls.clear();
    Grid wrong;
    write_file("grid", HandMadeGrid(file).bytes(false));
    wrong.read("grid", told);
    EXPECT_EQ(count_calls("dispfilereaderror"), 1) << file.iformat << " as " << told.iformat;
  }
}

TEST_F(ReadGrid, SplitRecordsAreReadAndWritten) {
  recordio::set_subrecord_limit(10);
  read(HandMadeGrid(in_double(blanked(unformatted))).bytes(false), in_double(blanked(unformatted)));
  grid.write("split", in_double(blanked(unformatted)));
  EXPECT_NE(read_file("split"), HandMadeGrid(in_double(blanked(unformatted))).bytes(true));
  Grid again;
  again.read("split", in_double(blanked(unformatted)));
  EXPECT_EQ(vector_of(again.xyz), vector_of(grid.xyz));
  EXPECT_EQ(vector_of(again.iblank), vector_of(grid.iblank));
}

}  // namespace
}  // namespace mod_p3dgrid
