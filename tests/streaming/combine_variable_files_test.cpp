#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "MOD_P3DReader.hpp"
#include "restart/restart_case.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class CombineVariableFiles : public InScratchFolder {
 protected:
  std::vector<integer> idim{2, 1};
  std::vector<integer> ones{1, 1};

  CombineVariableFiles() {
    nstep = 7;
    dtau = .5;
    set_sections({{1, 3}});
  }

  /// Temporary files of two blocks, of 2 and 1 points: variable m holds m.1, m.2 and m.3.
  template <class Put>
  void given(integer variables, Put put) {
    for (integer m = 1; m <= variables; ++m) {
      const std::string name = "v" + std::to_string(m);
      write_file(name, put(m));
      tmpfile(m) = name;
    }
  }
  static Bytes single(integer m) {
    const auto v = static_cast<float>(m);
    return Bytes().record(Bytes().r4s({v + .1F, v + .2F})).record(Bytes().r4(v + .3F));
  }
  static Bytes in_double(integer m) {
    const auto v = static_cast<double>(m);
    return Bytes().record(Bytes().r8s({v + .1, v + .2})).record(Bytes().r8(v + .3));
  }

  void combine(int iformat, bool dblprec, int layout, integer nblocks = 2, integer nparamrows = 9) {
    combinep3dvarfiles({}, "out", iformat, dblprec, nparamrows, nblocks, idim, ones, ones, layout,
                       true);
  }
  void expect_refused(int iformat, int layout, const std::string& words, integer nparamrows = 9) {
    try {
      combine(iformat, false, layout, 2, nparamrows);
      FAIL() << "combined";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
  }
};

TEST_F(CombineVariableFiles, VariablesThatTheHostCountsAnewMeanwhileAreNotOverrun) {
  given(3, single);
  on_allocation = [](int) { mod_gridvars::numrstrtvar(1) = 9; };
  expect_refused(0, 1, "changed while it was in use: variables 1 to 9 of 3");
}

TEST_F(CombineVariableFiles, WritesHeaderAndSectionsAndDeletesTheFiles) {
  given(3, single);
  combine(0, false, 1);
  EXPECT_EQ(read_file("out"), Bytes()
                                  .record(Bytes().i4(7).r4(.5F).i4(2))
                                  .record(Bytes().i4s({2, 1, 1}))
                                  .record(Bytes().i4s({1, 1, 1}))
                                  .record(Bytes().r4s({1.1F, 1.2F, 2.1F, 2.2F, 3.1F, 3.2F}))
                                  .record(Bytes().r4s({1.3F, 2.3F, 3.3F}))
                                  .str());
  for (const char* name : {"v1", "v2", "v3"}) EXPECT_FALSE(exists(name));
  EXPECT_FALSE(is_open("out"));
  EXPECT_EQ(tmpfile(1).view(), "v1");
  EXPECT_THAT(
      messages,
      ElementsAre("", " Combining the Temporary Variable Files into out",
                  " Reading variable 1 from filev1", " Reading variable 2 from filev2",
                  " Reading variable 3 from filev3", " Reading flow variable 1 for grid 1",
                  " Reading flow variable 2 for grid 1", " Reading flow variable 3 for grid 1",
                  " Writing flow variables for grid 1", " Reading flow variable 1 for grid 2",
                  " Reading flow variable 2 for grid 2", " Reading flow variable 3 for grid 2",
                  " Writing flow variables for grid 2"));
  EXPECT_THAT(calls, ElementsAre("checkallocationerror(0)", "checkallocationerror(0)"));
}

TEST_F(CombineVariableFiles, AllFilesAreOpenAtOnceOnTheirUnits) {
  given(3, single);
  on_allocation = [](int) {
    // The second check is that of the work array, when the files are open.
    if (count_calls("checkallocationerror") != 2) return;
    for (const char* name : {"v1", "v2", "v3"}) EXPECT_TRUE(is_open(name));
    p3dcloseunit(303);
    EXPECT_FALSE(is_open("v2"));
    test_support::Unit(303, 0).open("v2", recordio::OpenStatus::old);
  };
  combine(0, false, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(CombineVariableFiles, InDoublePrecision) {
  given(3, in_double);
  combine(2, true, 102);
  EXPECT_EQ(read_file("out"),
            Bytes().r8s({1.1, 1.2, 2.1, 2.2, 3.1, 3.2}).r8s({1.3, 2.3, 3.3}).str());
}

TEST_F(CombineVariableFiles, TextHoldsSinglesAsSinglesAndLosesNoDoubles) {
  given(3, in_double);
  write_file("v1", Bytes().record(Bytes().r8s({double{.1F}, .1})).record(Bytes().r8(-2)));
  combine(1, false, 102);
  EXPECT_EQ(read_file("out"), " 0.1 0.1 2.1 2.2 3.1 3.2\n -2 2.3 3.3\n");
}

TEST_F(CombineVariableFiles, WithoutBlocksWritesTheHeaderAndDeletesTheFiles) {
  given(3, [](integer) { return std::string("whatever"); });
  combine(0, false, 1, 0);
  EXPECT_EQ(read_file("out"), Bytes().record(Bytes().i4(7).r4(.5F).i4(0)).str());
  EXPECT_FALSE(exists("v1"));
}

TEST_F(CombineVariableFiles, Layout2WritesTheParametersInUse) {
  given(3, in_double);
  ASSERT_EQ(dqvar.allocate(2, 4), allocation_done);
  for (int m = 1; m <= 4; ++m) {
    dqvar(1, m) = m + .1;
    dqvar(2, m) = m + .2;
  }
  combine(2, true, 2, 2, 1);
  EXPECT_EQ(read_file("out"), Bytes()
                                  .i4s({2, 2, 1, 1, 1, 1, 1})
                                  .r8s({1.1, 2.1, 3.1, 4.1})
                                  .r8s({1.1, 1.2, 2.1, 2.2, 3.1, 3.2})
                                  .r8s({1.1, 2.1, 3.1, 4.1})
                                  .r8s({1.3, 2.3, 3.3})
                                  .str());
  // In single precision they are converted where only the others are there.
  given(3, single);
  combine(2, false, 2, 2, 2);
  EXPECT_EQ(sqvar(2, 4), 4.2F);
}

TEST_F(CombineVariableFiles, LeadingRecordsBeginWithTheBlocksTriplets) {
  given(3, in_double);
  const std::vector<float> lead{.1F, .2F, .3F, 1.1F, 1.2F, 1.3F, 2.1F, 2.2F, 2.3F};
  combinep3dvarfiles(array_view<const float, 2>(lead.data(), 3, 3), "out", 2, true, 9, 2, idim,
                     ones, ones, 100, true);
  EXPECT_EQ(read_file("out"), Bytes()
                                  .i4(7)
                                  .r8(.5)
                                  .i4(2)
                                  .r8s({double{.1F}, double{1.1F}, double{.2F}, double{1.2F},
                                        double{.3F}, double{1.3F}})
                                  .r8s({1.1, 1.2, 2.1, 2.2, 3.1, 3.2})
                                  .r8s({double{2.1F}, double{2.2F}, double{2.3F}})
                                  .r8s({1.3, 2.3, 3.3})
                                  .str());
}

TEST_F(CombineVariableFiles, AFileWithARecordTooFewDeletesAllAndTellsIt) {
  given(3, single);
  write_file("v2", Bytes().record(Bytes().r4s({1, 2})));
  on_read_error = [] {
    EXPECT_FALSE(exists("v1"));
    EXPECT_FALSE(exists("v3"));
  };
  combine(0, false, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_FALSE(exists("v2"));
  EXPECT_TRUE(is_open("out"));
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("v2: record 2"));
}

TEST_F(CombineVariableFiles, FilesOfAnotherPrecisionOrOtherBlocksAreFailedReads) {
  given(3, in_double);
  combine(0, false, 1);  // longer records than single precision has
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  calls.clear();
  given(3, single);
  combine(0, true, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  calls.clear();
  given(3, [](integer m) { return single(m).record(Bytes().r4(1)); });  // a block too many
  combine(0, false, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("found more records, expected the end"));
  calls.clear();
  given(3, single);
  idim[0] = 3;
  combine(0, false, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
}

TEST_F(CombineVariableFiles, AMissingFileIsAnErrorOfTheRunAndLeavesTheOthers) {
  given(3, single);
  tmpfile(2) = "vanished";
  expect_refused(0, 1, "cannot open vanished: No such file or directory");
  EXPECT_EQ(read_file("v1"), single(1).str());
  EXPECT_EQ(read_file("v3"), single(3).str());
  EXPECT_FALSE(exists("out"));
}

TEST_F(CombineVariableFiles, UnknownFormatsWriteNothingAndDeleteTheFiles) {
  given(3, single);
  combine(5, false, 1);
  EXPECT_FALSE(exists("out"));
  EXPECT_FALSE(exists("v1"));
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(CombineVariableFiles, VariablesThatNoRecordNamesAreDeletedUnread) {
  given(4, single);
  set_sections({{1, 3}});
  mod_gridvars::numrstrtvar(2) = 1;
  write_file("v4", std::string("not a variable"));
  combine(0, false, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_FALSE(exists("v4"));
}

TEST_F(CombineVariableFiles, VariablesOfTwoFlagsAreReadTwice) {
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(2) = 5;
  iflag(1) = 41;
  iflag(2) = 1;
  iflag(3) = 999;
  given(10, [](integer m) { return Bytes().record(Bytes().r4(static_cast<float>(m))); });
  const integer one = 1;
  const array_view<const integer, 1> extents(&one, 1);
  const float lead[3]{};
  combinep3dvarfiles(array_view<const float, 2>(lead, 3, 1), "out", 2, false, 9, 1, extents,
                     extents, extents, 101, true);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(read_file("out"), Bytes()
                                  .i4s({1, 1, 1, 7})
                                  .r4(.5F)
                                  .r4s({0, 0, 0, 1, 2, 3, 4, 5})
                                  .i4(41)
                                  .r4s({6, 7, 8})
                                  .i4(1)
                                  .r4s({6, 7, 8, 9, 10})
                                  .i4(999)
                                  .str());
}

TEST_F(CombineVariableFiles, ArgumentsThatCannotBeMeantEndTheRunAndDeleteNothing) {
  given(3, single);
  mod_gridvars::numrstrtvar(1) = 16;
  expect_refused(0, 1, "16 variables cannot be combined, at most 15 can");
  set_sections({{1, 4}});
  mod_gridvars::numrstrtvar(1) = 3;
  expect_refused(0, 1, "names variable 4, the flow array has 3");
  set_sections({{1, 3}});
  expect_refused(0, 2, "neither sqvar nor dqvar is allocated");
  expect_refused(0, 2, "nparamrows is below 1", 0);
  expect_refused(0, 100, "leadvalues holds 0 points, 3 are needed");
  expect_refused(0, 101, "iflag holds no flag 999");
  expect_refused(0, 66, "66 is no restart layout");
  idim = {2147483647, 2147483647};
  expect_refused(0, 100, "leadvalues holds 0 points, 4294967294 are needed");
  idim[1] = -1;
  expect_refused(0, 1, "extents of block 2 are below 0");
  for (const char* name : {"v1", "v2", "v3"}) EXPECT_TRUE(exists(name));
  EXPECT_FALSE(exists("out"));
}

TEST_F(CombineVariableFiles, MoreVariablesThanNamesAreRefusedWhateverIsToBecomeOfThem) {
  given(15, single);
  for (const integer count : {16, 2'000'000'000}) {
    mod_gridvars::numrstrtvar(1) = count;
    expect_refused(5, 1, std::to_string(count) + " variables cannot be combined");
    expect_refused(0, 0, std::to_string(count) + " variables cannot be combined");
  }
  EXPECT_TRUE(exists("v15"));
}

TEST_F(CombineVariableFiles, OneOfTheFilesIsNoPlaceForTheOutput) {
  given(3, single);
  ASSERT_EQ(::link("v3", "out"), 0);
  expect_refused(0, 1, "it is the temporary file of variable 3");
  EXPECT_EQ(read_file("out"), single(3).str());
  EXPECT_EQ(read_file("v1"), single(1).str());
}

TEST_F(CombineVariableFiles, AFullDiskLeavesTheFiles) {
  given(3, single);
  p3dsetpaths([](std::string_view name) {
    return name == "out" ? std::string("/dev/full") : std::string(name);
  });
  expect_refused(0, 1, "cannot write /dev/full: No space left on device");
  EXPECT_EQ(read_file("v1"), single(1).str());
  EXPECT_EQ(read_file("v3"), single(3).str());
}

TEST_F(CombineVariableFiles, AFileThatCannotBeDeletedKeepsNoOtherFromIt) {
  given(3, single);
  // When the files are open a folder takes the place of the first.
  on_allocation = [](int) {
    if (count_calls("checkallocationerror") != 2) return;
    ASSERT_EQ(::unlink("v1"), 0);
    ASSERT_EQ(::mkdir("v1", 0700), 0);
  };
  expect_refused(0, 1, "cannot delete v1: Is a directory");
  EXPECT_FALSE(exists("v2"));
  EXPECT_FALSE(exists("v3"));
  EXPECT_FALSE(is_open("out"));
  EXPECT_EQ(read_file("out").size(), 8u + 12 + 2 * (8 + 12) + 8 + 24 + 8 + 12);
}

TEST_F(CombineVariableFiles, PrintsItsLinesWhateverTheDebugSwitch) {
  p3dsetdebug(false);
  given(3, single);
  combine(0, false, 1);
  EXPECT_EQ(messages.size(), 13u);
}

TEST_F(CombineVariableFiles, ExtensionsBeyondTheVariablesAreErrorsOfTheRun) {
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(2) = 5;
  iflag(1) = 1;
  iflag(2) = 41;
  iflag(3) = 999;
  given(10, single);
  const float lead[9]{};
  EXPECT_THROW(combinep3dvarfiles(array_view<const float, 2>(lead, 3, 3), "out", 0, false, 9, 2,
                                  idim, ones, ones, 101, true),
               RunEnded);
  set_sections({{1, 3}});
  mod_gridvars::numrstrtvar(1) = 9;
  mod_gridvars::numrstrtvar(2) = -5;
  expect_refused(0, 1, "names variable 9, the flow array has 4");
  EXPECT_TRUE(exists("v10"));
}

TEST_F(CombineVariableFiles, BlanksInFrontOfNamesAreNotShown) {
  given(3, single);
  write_file("  v2", single(2));
  tmpfile(2) = "  v2";
  combinep3dvarfiles({}, "  out", 0, false, 9, 2, idim, ones, ones, 1, true);
  EXPECT_EQ(messages[1], " Combining the Temporary Variable Files into out");
  EXPECT_EQ(messages[3], " Reading variable 2 from filev2");
}

TEST_F(CombineVariableFiles, Layout0HaltsTheRun) {
  given(3, single);
  EXPECT_THROW(combine(0, false, 0), RunEnded);
  EXPECT_EQ(messages.back(), " TALVEN Writer not implimented!");
}

}  // namespace
}  // namespace mod_p3dgrid
