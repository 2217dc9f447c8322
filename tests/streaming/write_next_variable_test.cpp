#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "MOD_P3DReader.hpp"
#include "restart/restart_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class WriteNextVariable : public InScratchFolder {
 protected:
  std::vector<integer> idim{2, 1};
  std::vector<integer> jdim{1, 1};
  std::vector<integer> kdim{1, 1};
  std::vector<integer> blockpoints{2, 1};
  std::vector<float> values{.1F, .2F, .3F};

  void write(integer ivar, const std::string& prefix, bool dblprec, integer nblocks = 2) {
    writenextp3dvar(ivar, prefix, dblprec, nblocks, blockpoints,
                    array_view<const float, 2>(values.data(), 1, std::ssize(values)), idim, jdim,
                    kdim);
  }
  void expect_refused(integer ivar, const std::string& prefix, bool dblprec,
                      const std::string& words) {
    try {
      write(ivar, prefix, dblprec);
      FAIL() << "written";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
    EXPECT_FALSE(exists("abc000007.tmp"));
  }
};

TEST_F(WriteNextVariable, SinglePrecisionRecords) {
  write(7, "abc", false);
  EXPECT_EQ(read_file("abc000007.tmp"),
            Bytes().record(Bytes().r4s({.1F, .2F})).record(Bytes().r4(.3F)).str());
  EXPECT_EQ(tmpfile(7).view(), "abc000007.tmp");
  EXPECT_EQ(tmpfile(6).view(), "");
  EXPECT_THAT(messages, ElementsAre("",
                                    " Writing Interpolated Variable 7 to Temporary File "
                                    "abc000007.tmp",
                                    " Writing flow variable 7 for grid 1",
                                    " Writing flow variable 7 for grid 2"));
  EXPECT_THAT(calls, IsEmpty());
  EXPECT_FALSE(is_open("abc000007.tmp"));
}

TEST_F(WriteNextVariable, DoublePrecisionRecordsAreWidened) {
  write(15, "abc", true);
  EXPECT_EQ(read_file("abc000015.tmp"), Bytes()
                                            .record(Bytes().r8s({double{.1F}, double{.2F}}))
                                            .record(Bytes().r8(double{.3F}))
                                            .str());
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)"));
}

TEST_F(WriteNextVariable, TakesRowOneOfTheValues) {
  const std::vector<float> wide{1, -1, 2, -2, 3, -3};
  writenextp3dvar(1, "abc", true, 2, blockpoints, array_view<const float, 2>(wide.data(), 2, 3),
                  idim, jdim, kdim);
  EXPECT_EQ(read_file("abc000001.tmp"),
            Bytes().record(Bytes().r8s({1, 2})).record(Bytes().r8(3)).str());
}

TEST_F(WriteNextVariable, ABlockWithoutPointsIsAnEmptyRecord) {
  jdim[0] = 0;
  write(1, "abc", false);
  EXPECT_EQ(read_file("abc000001.tmp"), Bytes().record(Bytes()).record(Bytes().r4(.1F)).str());
}

TEST_F(WriteNextVariable, WithoutBlocksTheFileIsEmpty) {
  for (const bool dblprec : {false, true}) {
    write(1, "abc", dblprec, 0);
    EXPECT_EQ(read_file(std::string(tmpfile(1).view())), "");
  }
}

TEST_F(WriteNextVariable, ExistingFilesAreLeftAlone) {
  write_file("abc000007.tmp", std::string("user's"));
  write(7, "abc", false);
  EXPECT_EQ(tmpfile(7).view(), "abc000007.tmpt");
  write(7, "abc", false);
  EXPECT_EQ(tmpfile(7).view(), "abc000007.tmptt");
  EXPECT_EQ(read_file("abc000007.tmp"), "user's");
}

TEST_F(WriteNextVariable, NamesHaveSixDigitsAndAreCutAtFortyCharacters) {
  write(3, "flow", false);
  EXPECT_EQ(tmpfile(3).view(), "flow000003.tmp");
  write(12, std::string(35, 'x'), false);
  EXPECT_EQ(tmpfile(12).view(), std::string(35, 'x') + "00001");
}

TEST_F(WriteNextVariable, ANameThatCannotGrowIsAnErrorOfTheRunAndNoEndlessLoop) {
  const std::string prefix(30, 'x');  // 40 characters with digits and suffix
  write(1, prefix, false);
  expect_refused(1, prefix, false, "no free name for a temporary file: " + prefix + "000001.tmp");
  const std::string long_prefix(36, 'x');  // the digits that tell variables apart are cut off
  write(1, long_prefix, false);
  expect_refused(2, long_prefix, false, "no free name");
  EXPECT_TRUE(exists(long_prefix + "0000"));
}

TEST_F(WriteNextVariable, OutsideOneToFifteenIsAnErrorOfTheRun) {
  for (const integer ivar : {0, 16, -3, 1234567}) {
    expect_refused(ivar, "abc", false,
                   "variable " + std::to_string(ivar) + " cannot be streamed, only 1 to 15 can");
  }
}

TEST_F(WriteNextVariable, ArraysTooSmallAreErrorsOfTheRun) {
  values.pop_back();
  expect_refused(7, "abc", false, "varvalues holds 2 points, 3 are needed");
  values.push_back(1);
  blockpoints = {2};
  expect_refused(7, "abc", true, "blockpoints holds 2 points, 3 are needed");
  idim = jdim = {40000, 40000};
  kdim = {1, 1};
  expect_refused(7, "abc", false, "varvalues holds 3 points, 3200000000 are needed");
  kdim.pop_back();
  expect_refused(7, "abc", false, "extents of 1 blocks for 2");
  EXPECT_EQ(tmpfile(7).view(), "");
}

TEST_F(WriteNextVariable, ExceptionsReleaseTheStagingAndSecondCallsFindNone) {
  p3dsetdebug(false);  // the lines are printed all the same
  p3dsetmessages([](std::string_view line) {
    if (line == " Writing flow variable 1 for grid 2") throw std::runtime_error("host");
  });
  EXPECT_THROW(write(1, "abc", true), std::runtime_error);
  calls.clear();
  write(2, "abc", true);
  write(3, "abc", true);
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
}

TEST_F(WriteNextVariable, MorePointsToSizeTheStagingByAreNotRead) {
  blockpoints = {50, 50};
  write(1, "abc", true);
  EXPECT_EQ(read_file("abc000001.tmp").size(), 8u + 16 + 8 + 8);
}

TEST_F(WriteNextVariable, ValuesWithoutARowAreErrorsOfTheRun) {
  EXPECT_THROW(writenextp3dvar(1, "abc", false, 2, blockpoints,
                               array_view<const float, 2>(values.data(), 0, 3), idim, jdim, kdim),
               RunEnded);
}

TEST_F(WriteNextVariable, ADanglingLinkIsNoFreeName) {
  ASSERT_EQ(::symlink("nowhere", "abc000001.tmp"), 0);
  write(1, "abc", false);
  EXPECT_EQ(tmpfile(1).view(), "abc000001.tmpt");
  EXPECT_FALSE(exists("nowhere"));
}

TEST_F(WriteNextVariable, NoNameIsKeptOfAFileThatWasNotWritten) {
  tmpfile(1) = "earlier";
  p3dsetpaths([](std::string_view) { return std::string("missing-folder/x"); });
  EXPECT_THROW(write(1, "abc", false), RunEnded);
  EXPECT_EQ(tmpfile(1).view(), "");
}

TEST_F(WriteNextVariable, TheNameIsThereWhenItsMessageIs) {
  write_file("abc000007.tmp", std::string("user's"));
  tmpfile(7) = "earlier";
  std::vector<std::string> names;
  p3dsetmessages([&](std::string_view) { names.emplace_back(tmpfile(7).view()); });
  write(7, "abc", false);
  EXPECT_THAT(names, ::testing::SizeIs(4));
  EXPECT_THAT(names, ::testing::Each("abc000007.tmpt"));
}

TEST_F(WriteNextVariable, AFileThatSomebodyElseCreatesMeanwhileIsNotNamed) {
  p3dsetmessages([&](std::string_view line) {
    if (!line.empty()) write_file("abc000007.tmp", std::string("user's"));
  });
  EXPECT_THROW(write(7, "abc", false), RunEnded);
  EXPECT_EQ(tmpfile(7).view(), "");
  EXPECT_EQ(read_file("abc000007.tmp"), "user's");
}

TEST_F(WriteNextVariable, NoNameIsKeptIfTheHostThrowsBeforeTheFileIsThere) {
  p3dsetmessages([](std::string_view) { throw std::runtime_error("host"); });
  EXPECT_THROW(write(7, "abc", false), std::runtime_error);
  EXPECT_EQ(tmpfile(7).view(), "");
}

TEST_F(WriteNextVariable, TheNameIsKeptOfAFileThatWasBegun) {
  p3dsetmessages([](std::string_view line) {
    if (line == " Writing flow variable 7 for grid 1") throw std::runtime_error("host");
  });
  EXPECT_THROW(write(7, "abc", false), std::runtime_error);
  EXPECT_EQ(tmpfile(7).view(), "abc000007.tmp");
}

TEST_F(WriteNextVariable, AFullDiskIsAnErrorOfTheRun) {
  p3dsetpaths([](std::string_view) { return std::string("missing-folder/x"); });
  EXPECT_THROW(write(1, "abc", false), RunEnded);
}

}  // namespace
}  // namespace mod_p3dgrid
