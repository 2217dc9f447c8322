#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"
#include "restart/staging.hpp"
#include "support/module_state.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ReadRestart : public InScratchFolder {
 protected:
  /// Reads a hand-made file, with the section table that its form names.
  static void read(Restart& restart, const HandMadeRestart& made) {
    set_sections(made.form.sections);
    read_with_table_as_it_is(restart, made);
  }
  static void read_with_table_as_it_is(Restart& restart, const HandMadeRestart& made) {
    write_file("restart", made.bytes());
    restart.read("restart", made.form);
  }

  static void read_uncounted() {
    Restart restart(1);
    read(restart, HandMadeRestart({.layout = 2, .iformat = 2, .blocks = 1, .multiblock = false}));
  }

  static void expect_failed(const std::string& words) {
    EXPECT_EQ(count_calls("dispfilereaderror"), 1);
    EXPECT_TRUE(is_open("restart"));
    EXPECT_THAT(p3dlastfailure().describe(), HasSubstr(words));
  }

  /// Reading ends the run with an error that holds `words`.
  static void expect_refused(Restart& restart, const HandMadeRestart& made,
                             const std::string& words) {
    try {
      read_with_table_as_it_is(restart, made);
      FAIL() << "read";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
  }
};

TEST_F(ReadRestart, AnnouncesItselfByLayoutAndPrecision) {
  struct Announced {
    int layout;
    const char* codes;
  };
  for (const auto& [layout, codes] : {Announced{0, "20, 300"},
                                      {1, "20, 300"},
                                      {100, "20, 300"},
                                      {101, "20, 300"},
                                      {102, "20, 300"},
                                      {2, "40, 200"},
                                      {3, "50, 200"}}) {
    calls.clear();
    HandMadeRestart made({layout, 1, true, 1});
    made.equation_set = 2;
    Restart restart(1);
    dqvar.deallocate();
    read(restart, made);
    EXPECT_EQ(calls.front(),
              std::string("dispreadwrite(1, ") + codes + ", restart, 1, T, -, -, T, -, -)");
    EXPECT_EQ(count_calls("dispreadwrite"), 1);
  }
}

TEST_F(ReadRestart, ChecksEachAllocationOnce) {
  // Header extents, flow parameters, flow.
  Restart single(2);
  read(single, HandMadeRestart({.layout = 2, .iformat = 2}));
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(0)", "checkallocationerror(0)"));
  // Header extents, staged flow, flow.
  calls.clear();
  Restart staged(2);
  read(staged, HandMadeRestart({.layout = 1, .iformat = 0, .dblprec = true}));
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(0)", "checkallocationerror(0)"));
  // Header extents twice, staged flow, triplets with their staging, triplets again, flow.
  calls.clear();
  Restart twice(1);
  read(twice, HandMadeRestart({.layout = 101, .iformat = 0, .dblprec = true, .blocks = 1}));
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(0)", "checkallocationerror(0)",
                                 "checkallocationerror(0)",
                                 "checkallocationerror(" + std::to_string(already_allocated) + ")",
                                 "checkallocationerror(0)"));
}

TEST_F(ReadRestart, PrintsBlockCountAndProgress) {
  Restart restart(2);
  read(restart, HandMadeRestart({.layout = 1}));
  EXPECT_THAT(messages, ElementsAre(" Number of grids is 2", " Reading flow variables for grid 1",
                                    " Reading flow variables for grid 2"));
  messages.clear();
  p3dsetdebug(false);
  Restart quiet(2);
  read(quiet, HandMadeRestart({.layout = 1}));
  EXPECT_THAT(messages, ElementsAre(" Number of grids is 2"));
}

TEST_F(ReadRestart, WithoutAllVariablesReadsTheHeaderAndSizesOneVariable) {
  mod_gridvars::readallvars = false;
  for (const RestartForm& form :
       {RestartForm{.layout = 1}, {.layout = 2}, {.layout = 2, .dblprec = true}}) {
    calls.clear();
    sqvar.deallocate();
    Restart restart(2);
    restart.blockpoints = {10, -3};
    HandMadeRestart made(form);
    write_file("restart", made.header());  // no body is needed
    set_sections(form.sections);
    restart.read("restart", form);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(restart.varvalues.extent(1), 1);
    EXPECT_EQ(restart.varvalues.extent(2), 7);
    EXPECT_FALSE(is_open("restart"));
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_EQ(sqvar.allocated(), form.layout == 2 && !form.dblprec);
    EXPECT_EQ(dqvar.allocated(), form.layout == 2 && form.dblprec);
  }
}

TEST_F(ReadRestart, Layout2InSinglePrecisionKeepsParametersAndTheLastBlocksWidened) {
  Restart restart(3);
  read(restart, HandMadeRestart({.layout = 2, .blocks = 3}));
  EXPECT_FALSE(dqvar.allocated());
  ASSERT_EQ(sqvar.extent(1), 3);
  for (int b = 0; b < 3; ++b) {
    for (int m = 1; m <= 4; ++m) {
      EXPECT_EQ(sqvar(b + 1, m), static_cast<float>(HandMadeRestart::parameter(b, m)));
    }
  }
  EXPECT_EQ(p3dxm1, static_cast<double>(sqvar(3, 1)));
  EXPECT_EQ(p3dalfa, static_cast<double>(sqvar(3, 2)));
  EXPECT_EQ(p3dre, static_cast<double>(sqvar(3, 3)));
  EXPECT_EQ(p3dtau, static_cast<double>(sqvar(3, 4)));
}

TEST_F(ReadRestart, Layout2InDoublePrecisionKeepsParametersInDouble) {
  Restart restart(2);
  read(restart, HandMadeRestart({.layout = 2, .iformat = 2, .dblprec = true}));
  EXPECT_FALSE(sqvar.allocated());
  EXPECT_EQ(dqvar(2, 3), HandMadeRestart::parameter(1, 3));
  EXPECT_EQ(p3dre, HandMadeRestart::parameter(1, 3));
}

TEST_F(ReadRestart, Layout2AsTextKeepsParametersInDoubleAndLeavesTheModulesCopies) {
  p3dxm1 = p3dalfa = p3dre = p3dtau = 9;
  for (const bool dblprec : {false, true}) {
    dqvar.deallocate();
    Restart restart(3);
    read(restart, HandMadeRestart({.layout = 2, .iformat = 1, .dblprec = dblprec, .blocks = 3}));
    EXPECT_FALSE(sqvar.allocated());
    EXPECT_EQ(dqvar(3, 1), HandMadeRestart::parameter(2, 1));
    EXPECT_THAT((std::array{p3dxm1, p3dalfa, p3dre, p3dtau}), Each(9));
  }
}

TEST_F(ReadRestart, Layout2CountsFiveVariables) {
  set_sections({{1, 3}, {4, 5}});
  HandMadeRestart made({.layout = 2, .sections = {{1, 3}, {4, 5}}});
  Restart restart(2);
  read_with_table_as_it_is(restart, made);
  EXPECT_EQ(mod_gridvars::numrstrtvar(1), 5);
  EXPECT_EQ(restart.varvalues.extent(1), 7);  // 5 and the 2 that the table gives section 2
}

TEST_F(ReadRestart, Layout3TakesTheBlocksVariableCounts) {
  // Block 1 has 5 functions, block 2 has 7; the records are those of the section table.
  write_file(
      "restart",
      Bytes().i4s({2, 1, 1, 1, 5, 1, 1, 1, 7}).r4s({1, 2, 3, 4, 5}).r4s({11, 12, 13, 14, 15}));
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar.fill(0);
  Restart restart(2);
  restart.idim = restart.jdim = restart.kdim = {1, 1};
  std::vector<integer> counts;
  // The count of the block being read is set when its progress line has been printed.
  p3dsetmessages([&](std::string_view) { counts.push_back(mod_gridvars::numrstrtvar(1)); });
  restart.read("restart", {.layout = 3, .iformat = 2});
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(restart.varvalues.extent(1), 7);
  EXPECT_EQ(restart.varvalues(5, 1), 5);
  EXPECT_EQ(restart.varvalues(5, 2), 15);
  EXPECT_EQ(mod_gridvars::numrstrtvar(1), 7);
  EXPECT_THAT(counts, ElementsAre(0, 7, 5));
}

TEST_F(ReadRestart, Layout3KeepsAllVariablesWhereverTheBlockWithTheMostStands) {
  for (const bool dblprec : {false, true}) {
    nfvar.deallocate();
    Bytes file = Bytes().i4s({2, 1, 1, 1, 3, 1, 1, 1, 2});
    for (const double value : {1., 2., 3., 11., 12.}) {
      if (dblprec) {
        file.r8(value);
      } else {
        file.r4(static_cast<float>(value));
      }
    }
    write_file("restart", file);
    // Two functions of each block, the third of the first block on its own.
    set_sections({{1, 2}});
    mod_gridvars::numrstrtvar.fill(0);
    Restart restart(2);
    restart.idim = restart.jdim = restart.kdim = {1, 1};
    restart.read("restart", {.layout = 3, .iformat = 2, .dblprec = dblprec});
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(restart.varvalues.extent(1), 3);
    EXPECT_EQ(restart.varvalues(2, 1), 2.F);
    EXPECT_EQ(mod_gridvars::numrstrtvar(1), 3);
  }
}

TEST_F(ReadRestart, Layout3WithFewerThanNoVariablesIsAFailedRead) {
  for (const bool dblprec : {false, true}) {
    for (const auto& [first, second] : {std::pair{7, -50}, {-50, 7}, {-1, -1}}) {
      calls.clear();
      nfvar.deallocate();
      write_file("restart",
                 Bytes().i4s({2, 1, 1, 1, first, 1, 1, 1, second}).str() + std::string(200, '\0'));
      set_sections({});
      Restart restart(2);
      restart.idim = restart.jdim = restart.kdim = {1, 1};
      restart.read("restart", {.layout = 3, .iformat = 2, .dblprec = dblprec});
      expect_failed("expected a count from 0 on");
    }
  }
}

TEST_F(ReadRestart, TextLeavesTripletsOfOtherLayoutsAlone) {
  Restart restart(2);
  ASSERT_EQ(restart.auxvalues.allocate(1, 1), allocation_done);
  restart.auxvalues(1, 1) = 42;
  read(restart, HandMadeRestart({.layout = 1, .iformat = 1}));
  EXPECT_EQ(restart.auxvalues(1, 1), 42);
}

TEST_F(ReadRestart, ExtensionVariablesAndTripletsLeftOutOfTextAreZero) {
  write_file("restart", std::string("2 1 1 7 .5\n,,1 1 1 1 1 1 2 2 3 3 4 4 5 5\n1\n"
                                    "6 6 7 7,,, 9 9 10/\n999\n"));
  set_sections({{1, 5}});
  Restart restart(1);
  restart.idim = {2};
  restart.jdim = restart.kdim = {1};
  restart.read("restart", {.layout = 101, .iformat = 1});
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(restart.varvalues(8, 1), 0.F);
  EXPECT_EQ(restart.varvalues(8, 2), 0.F);
  EXPECT_EQ(restart.varvalues(10, 1), 10.F);
  EXPECT_EQ(restart.varvalues(10, 2), 0.F);
  EXPECT_EQ(restart.auxvalues(1, 1), 0.F);
}

TEST_F(ReadRestart, ParametersLeftOutOfTextAreZero) {
  write_file("restart", std::string("1\n1 1 1\n.5,,/\n1 2 3 4 5\n"));
  set_sections({{1, 5}});
  Restart restart(1);
  restart.idim = restart.jdim = restart.kdim = {1};
  restart.read("restart", {.layout = 2, .iformat = 1});
  EXPECT_EQ(vector_of(dqvar), (std::vector{.5, 0., 0., 0.}));
}

TEST_F(ReadRestart, WhatIsNotReadIsNotAskedOfTheFile) {
  // No section of 8,000,000 points and 5 variables.
  write_file("restart", std::string());
  set_sections({});
  mod_gridvars::numrstrtvar(1) = 5;
  Restart restart(1);
  restart.idim = restart.jdim = restart.kdim = {200};
  restart.read("restart", {.layout = 102, .iformat = 2});
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(restart.varvalues.extent(2), 8'000'000);
}

TEST_F(ReadRestart, DoublePrecisionReadAsSingleIsSeenWhereWholeRecordsAreWanted) {
  HandMadeRestart made({.layout = 3, .iformat = 0, .dblprec = true, .blocks = 1});
  write_file("restart", made.bytes());
  made.form.dblprec = false;
  set_sections(made.form.sections);
  Restart(1).read("restart", made.form);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  p3dsetwholerecords(true);
  Restart(1).read("restart", made.form);
  expect_failed(": found a record of 160 bytes, expected one of 80");
}

TEST_F(ReadRestart, Layout100InSinglePrecisionRecordsLeavesValuesInThem) {
  p3dsetwholerecords(true);
  const HandMadeRestart made({.layout = 100, .iformat = 0});
  Restart restart(2);
  read(restart, made);
  expect_failed(": found a record of 128 bytes, expected one of 80");
}

TEST_F(ReadRestart, OlderTimeLevelsNeedNoRowOfTheFlow) {
  for (const int itime : {2, 3}) {
    for (const int iformat : {0, 2}) {
      for (const bool dblprec : {false, true}) {
        calls.clear();
        HandMadeRestart made({.layout = 0, .iformat = iformat, .dblprec = dblprec});
        made.time_integration = itime;
        made.older_levels = itime - 2;  // with the record of the section as many as are skipped
        set_sections({{1, 5}});
        mod_gridvars::nfilesect = 0;
        mod_gridvars::numrstrtvar(1) = 0;
        Restart restart(2);
        read_with_table_as_it_is(restart, made);
        EXPECT_EQ(count_calls("dispfilereaderror"), 0) << itime;
        EXPECT_EQ(restart.varvalues.extent(1), 0);
        EXPECT_EQ(restart.varvalues.extent(2), 7);
        // They are read all the same: a file that lacks the last of them is too short.
        const std::string bytes = made.bytes();
        write_file("restart", bytes.substr(0, bytes.size() - 5));
        Restart shorter(2);
        shorter.read("restart", made.form);
        EXPECT_EQ(count_calls("dispfilereaderror"), 1) << itime;
        reset_staging();
      }
    }
  }
}

TEST_F(ReadRestart, OlderTimeLevelsOfAbsurdSectionsAreAFailedRead) {
  HandMadeRestart made({.layout = 0, .iformat = 0, .blocks = 1, .sections = {}});
  made.time_integration = 2;
  set_sections({});
  mod_gridvars::numrstrtvar(1) = 5;
  mod_gridvars::rstrtvarsct(1, 1) = std::numeric_limits<integer>::min();
  mod_gridvars::rstrtvarsct(1, 2) = std::numeric_limits<integer>::max();
  Restart restart(1);
  read_with_table_as_it_is(restart, made);
  expect_failed("found a file far too short for that");
}

TEST_F(ReadRestart, AllocatedTripletsAreReportedAndNeverOverrun) {
  for (const bool dblprec : {false, true}) {
    const HandMadeRestart made({.layout = 101, .iformat = 0, .dblprec = dblprec, .blocks = 1});
    calls.clear();
    Restart restart(1);
    ASSERT_EQ(restart.auxvalues.allocate(3, 3), allocation_done);  // one point too few
    read(restart, made);
    expect_failed("expected an unallocated array for triplets");
    reset_staging();
    calls.clear();
    Restart large(1);
    ASSERT_EQ(large.auxvalues.allocate(3, 4), allocation_done);
    read(large, made);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(vector_of(large.auxvalues), made.auxvalues());
  }
}

TEST_F(ReadRestart, AnnouncesAMissingBlockCount) {
  read_uncounted();
  EXPECT_EQ(calls.front(), "dispreadwrite(1, 40, 200, restart, 2, F, -, -, F, -, -)");
}

TEST_F(ReadRestart, Layout3WithoutBlocksHasTheSmallestIntegerOfVariables) {
  write_file("restart", Bytes().i4(0));
  mod_gridvars::numrstrtvar.fill(0);
  Restart restart(0);
  restart.read("restart", {.layout = 3, .iformat = 2, .blocks = 0});
  EXPECT_EQ(mod_gridvars::numrstrtvar(1), std::numeric_limits<integer>::min());
  EXPECT_EQ(restart.varvalues.extent(1), 0);
  EXPECT_TRUE(restart.varvalues.allocated());
}

TEST_F(ReadRestart, WithoutSectionsNoFlowRecordIsRead) {
  set_sections({});
  mod_gridvars::numrstrtvar(1) = 5;
  HandMadeRestart made({.layout = 2, .sections = {}});
  Restart restart(2);
  read_with_table_as_it_is(restart, made);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(restart.varvalues.extent(1), 5);
  EXPECT_EQ(p3dre, static_cast<double>(static_cast<float>(HandMadeRestart::parameter(1, 3))));
  mod_gridvars::nfilesect = -3;
  Restart below(2);
  sqvar.deallocate();
  read_with_table_as_it_is(below, made);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(ReadRestart, ASectionOfNoVariablesConsumesARecord) {
  for (const int iformat : {0, 1, 2}) {
    calls.clear();
    HandMadeRestart made({.layout = 1, .iformat = iformat, .sections = {{1, 2}, {5, 4}, {3, 3}}});
    Restart restart(2);
    read(restart, made);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(vector_of(restart.varvalues), made.varvalues(3));
  }
}

TEST_F(ReadRestart, OlderTimeLevelsAreSkipped) {
  for (const int itime : {1, 2, 3, 4}) {
    for (const int iformat : {0, 2}) {
      for (const bool dblprec : {false, true}) {
        calls.clear();
        HandMadeRestart made({.layout = 0, .iformat = iformat, .dblprec = dblprec});
        made.time_integration = itime;
        made.older_levels = itime == 3 ? 2 : itime >= 2 ? 1 : 0;
        Restart restart(2);
        read(restart, made);
        EXPECT_EQ(count_calls("dispfilereaderror"), 0) << itime;
        EXPECT_EQ(vector_of(restart.varvalues), made.varvalues(5)) << itime;
        EXPECT_EQ(itimeint, itime);
        // Without them the file ends too early.
        if (made.older_levels == 0) continue;
        calls.clear();
        --made.older_levels;
        Restart missing(2);
        read(missing, made);
        EXPECT_EQ(count_calls("dispfilereaderror"), 1) << itime;
        reset_staging();
      }
    }
  }
}

TEST_F(ReadRestart, TextWithOlderTimeLevelsCannotBeRead) {
  HandMadeRestart made({.layout = 0, .iformat = 1});
  made.time_integration = 2;
  made.older_levels = 1;
  Restart restart(2);
  read(restart, made);
  expect_failed("found a text file, expected an unformatted record of an older time level");
  EXPECT_EQ(restart.varvalues(5, 4), static_cast<float>(HandMadeRestart::flow(5, 3)));
}

TEST_F(ReadRestart, Layout100InSinglePrecisionRecordsReadsOrdinarySections) {
  HandMadeRestart made({.layout = 100, .iformat = 2});
  made.leading = false;
  iflag.fill(5);
  mod_gridvars::numrstrtvar(1) = 5;
  Restart restart(2);
  read(restart, made);
  EXPECT_EQ(vector_of(restart.varvalues), made.varvalues(5));
  EXPECT_EQ(restart.auxvalues.extent(1), 3);
  EXPECT_EQ(restart.auxvalues.extent(2), 7);
  EXPECT_THAT(iflag.span(), Each(0));
}

TEST_F(ReadRestart, Layout100InDoublePrecisionKeepsItsStagingForTheNextReadToReport) {
  const HandMadeRestart made({.layout = 100, .iformat = 0, .dblprec = true});
  Restart first(2);
  read(first, made);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(vector_of(first.varvalues), made.varvalues(5));
  EXPECT_TRUE(restart_staging<double>.triplets.allocated());
  EXPECT_FALSE(restart_staging<double>.flow.allocated());
  calls.clear();
  Restart second(2);
  read(second, made);
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(0)", "checkallocationerror(1)",
                                 "checkallocationerror(0)"));
  EXPECT_EQ(vector_of(second.varvalues), made.varvalues(5));
  // Layout 101 takes the staging over and releases it.
  const HandMadeRestart next({.layout = 101, .iformat = 0, .dblprec = true, .blocks = 1});
  Restart third(1);
  read(third, next);
  EXPECT_EQ(vector_of(third.auxvalues), next.auxvalues());
  EXPECT_FALSE(restart_staging<double>.triplets.allocated());
}

TEST_F(ReadRestart, StagingOfOtherBoundsIsReportedAndMadeAnew) {
  const HandMadeRestart small({.layout = 100, .iformat = 0, .dblprec = true, .blocks = 1});
  Restart first(1);
  read(first, small);
  ASSERT_EQ(restart_staging<double>.triplets.extent(2), 4);
  calls.clear();
  Restart second(2);
  const HandMadeRestart larger({.layout = 100, .iformat = 0, .dblprec = true});
  read(second, larger);
  EXPECT_EQ(calls[3], "checkallocationerror(1)");
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  EXPECT_EQ(vector_of(second.varvalues), larger.varvalues(5));
  EXPECT_EQ(restart_staging<double>.triplets.extent(2), 7);
}

TEST_F(ReadRestart, ExceptionsReleaseTheStaging) {
  const HandMadeRestart made({.layout = 1, .iformat = 0, .dblprec = true});
  set_sections({{1, 5}});
  p3dsetmessages([](std::string_view line) {
    if (line == " Reading flow variables for grid 2") throw std::runtime_error("host");
  });
  Restart restart(2);
  EXPECT_THROW(read_with_table_as_it_is(restart, made), std::runtime_error);
  EXPECT_FALSE(restart_staging<double>.flow.allocated());
  mod_gridvars::rstrtvarsct(1, 2) = 9;
  EXPECT_THROW(read_with_table_as_it_is(restart, made), RunEnded);
  EXPECT_FALSE(restart_staging<double>.flow.allocated());
}

TEST_F(ReadRestart, StagingLeftByAFailedReadIsReportedByTheNext) {
  const HandMadeRestart made({.layout = 1, .iformat = 0, .dblprec = true});
  set_sections(made.form.sections);
  const std::string whole = made.bytes();
  write_file("restart", whole.substr(0, whole.size() - 1));
  Restart failed(2);
  failed.read("restart", made.form);
  expect_failed("expected");
  EXPECT_TRUE(restart_staging<double>.flow.allocated());
  EXPECT_FALSE(failed.varvalues.allocated());
  calls.clear();
  Restart next(2);
  read(next, made);
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(1)", "checkallocationerror(0)"));
  EXPECT_EQ(vector_of(next.varvalues), made.varvalues(5));
  EXPECT_FALSE(restart_staging<double>.flow.allocated());
}

struct Chain {
  std::vector<int> flags;
  int variables;           ///< rows of the flow array afterwards
  int second_count;        ///< numrstrtvar(2) afterwards
  std::vector<int> unset;  ///< variables that no record holds
};

TEST_F(ReadRestart, ExtensionChainsOfLayout101) {
  for (const Chain& chain : {Chain{{999}, 5, 0, {}},
                             {{1, 999}, 10, 5, {}},
                             {{41, 999}, 8, 3, {}},
                             {{1, 41, 999}, 13, 8, {}},
                             {{41, 41, 999}, 13, 8, {9, 10}},
                             {{41, 1, 999}, 10, 5, {}},
                             {{7, 999}, 5, 0, {}},
                             {{0, 1, 999}, 10, 5, {}},
                             {{-5, 41, 999}, 13, 8, {6, 7, 8, 9, 10}},
                             {{1, 77, 999}, 10, 5, {}}}) {
    for (const int iformat : {0, 1, 2}) {
      for (const bool dblprec : {false, true}) {
        calls.clear();
        HandMadeRestart made({.layout = 101, .iformat = iformat, .dblprec = dblprec, .blocks = 1});
        made.flags = chain.flags;
        Restart restart(1);
        read(restart, made);
        ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
        ASSERT_EQ(restart.varvalues.extent(1), chain.variables);
        EXPECT_EQ(mod_gridvars::numrstrtvar(1), 5);
        EXPECT_EQ(mod_gridvars::numrstrtvar(2), chain.second_count);
        for (std::size_t m = 0; m < chain.flags.size(); ++m) {
          EXPECT_EQ(iflag(m + 1), chain.flags[m]);
        }
        for (int p = 0; p < made.all_points(); ++p) {
          for (int v = 1; v <= chain.variables; ++v) {
            if (std::ranges::count(chain.unset, v) != 0) continue;
            EXPECT_EQ(restart.varvalues(v, p + 1), static_cast<float>(HandMadeRestart::flow(v, p)))
                << v;
          }
        }
        EXPECT_EQ(vector_of(restart.auxvalues), made.auxvalues());
        EXPECT_FALSE(restart_staging<float>.enlarged.allocated());
        EXPECT_FALSE(restart_staging<double>.enlarged.allocated());
      }
    }
  }
}

TEST_F(ReadRestart, ChainsWithoutTheirEndAreFailedReads) {
  for (const auto& flags : {std::vector<int>{1, 41, 41}, {5, 6, 7}, {0, 0, 0, 999}}) {
    calls.clear();
    HandMadeRestart made({.layout = 101, .iformat = 2, .blocks = 1});
    made.flags = flags;
    Restart restart(1);
    read(restart, made);
    expect_failed("expected a chain of at most three flags that ends with 999");
  }
}

TEST_F(ReadRestart, ALargerFlowArrayIsNotEnlargedByExtensions) {
  HandMadeRestart made({.layout = 101, .iformat = 2, .blocks = 1});
  made.flags = {1, 999};
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(3) = 7;
  Restart restart(1);
  read_with_table_as_it_is(restart, made);
  EXPECT_EQ(restart.varvalues.extent(1), 12);
  EXPECT_EQ(restart.varvalues(10, 4), static_cast<float>(HandMadeRestart::flow(10, 3)));
}

TEST_F(ReadRestart, DoublePrecisionAllocatesTheFlowByTheTableAsTheExtensionsLeftIt) {
  HandMadeRestart made({.layout = 101, .iformat = 2, .dblprec = true, .blocks = 1});
  made.flags = {41, 999};
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(3) = 7;  // 12 rows are staged, 5 + 3 + 7 are the result
  Restart restart(1);
  read_with_table_as_it_is(restart, made);
  EXPECT_EQ(restart.varvalues.extent(1), 15);
  EXPECT_EQ(restart.varvalues(8, 4), static_cast<float>(HandMadeRestart::flow(8, 3)));
}

TEST_F(ReadRestart, MoreBlocksThanTheCallerHasAreAFailedRead) {
  Restart restart(1);
  read(restart, HandMadeRestart({.layout = 1, .iformat = 2}));
  expect_failed("a header of 2 blocks, expected at most 1");
  EXPECT_FALSE(restart.varvalues.allocated());
  EXPECT_THAT(messages, ElementsAre(" Number of grids is 2"));
}

TEST_F(ReadRestart, FewerBlocksThanTheCallerHasAreRead) {
  Restart restart(3);
  HandMadeRestart made({.layout = 1, .iformat = 2});
  read(restart, made);
  EXPECT_EQ(vector_of(restart.varvalues), made.varvalues(5));
}

TEST_F(ReadRestart, FailedHeadersAreToldOnceAndEndTheRead) {
  write_file("restart", Bytes().i4(4));
  Restart restart(2);
  restart.read("restart", {.layout = 2, .iformat = 0});
  expect_failed("record 1");
  EXPECT_FALSE(sqvar.allocated());
  EXPECT_THAT(messages, IsEmpty());
}

TEST_F(ReadRestart, FailedBodiesKeepWhatWasRead) {
  const HandMadeRestart made({.layout = 2, .iformat = 2});
  const std::string whole = made.bytes();
  write_file("restart", whole.substr(0, whole.size() - 4));
  set_sections(made.form.sections);
  Restart restart(2);
  restart.read("restart", made.form);
  expect_failed("record 6");
  ASSERT_EQ(restart.varvalues.size(), 35);
  EXPECT_EQ(restart.varvalues(5, 4), static_cast<float>(HandMadeRestart::flow(5, 3)));
}

TEST_F(ReadRestart, AllocatedParametersAreReportedAndUsedIfLargeEnough) {
  ASSERT_EQ(sqvar.allocate(2, 4), allocation_done);
  Restart restart(2);
  read(restart, HandMadeRestart({.layout = 2}));
  EXPECT_EQ(calls[2], "checkallocationerror(1)");
  EXPECT_EQ(sqvar(2, 4), static_cast<float>(HandMadeRestart::parameter(1, 4)));
  sqvar.deallocate();
  ASSERT_EQ(sqvar.allocate(1, 4), allocation_done);
  calls.clear();
  Restart other(2);
  read(other, HandMadeRestart({.layout = 2}));
  expect_failed("expected an unallocated array for the flow parameters");
}

TEST_F(ReadRestart, AllocatedFlowIsReportedAndNeverOverrun) {
  for (const bool dblprec : {false, true}) {
    Restart restart(2);
    calls.clear();
    ASSERT_EQ(restart.varvalues.allocate(5, 6), allocation_done);  // one point too few
    read(restart, HandMadeRestart({.layout = 1, .iformat = 2, .dblprec = dblprec}));
    expect_failed("expected an unallocated array for the flow variables");
  }
}

TEST_F(ReadRestart, AllocatedFlowIsReportedAndUsedIfLargeEnough) {
  for (const bool dblprec : {false, true}) {
    Restart wide(2);
    calls.clear();
    ASSERT_EQ(wide.varvalues.allocate(6, 9), allocation_done);
    const float* const storage = wide.varvalues.data();
    read(wide, HandMadeRestart({.layout = 1, .iformat = 2, .dblprec = dblprec}));
    EXPECT_EQ(calls.back(), "checkallocationerror(1)");
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(wide.varvalues.data(), storage);
    EXPECT_EQ(wide.varvalues(5, 7), static_cast<float>(HandMadeRestart::flow(5, 6)));
    EXPECT_FALSE(restart_staging<double>.flow.allocated());
  }
}

TEST_F(ReadRestart, AFlowArrayThatTheHostRecountsMeanwhileIsAllocatedByItsCount) {
  const HandMadeRestart made({.layout = 1, .iformat = 2, .dblprec = true});
  set_sections(made.form.sections);
  p3dsetmessages([](std::string_view line) {
    if (line == " Reading flow variables for grid 2") mod_gridvars::numrstrtvar(1) = 4;
  });
  Restart restart(2);
  read_with_table_as_it_is(restart, made);
  EXPECT_EQ(restart.varvalues.extent(1), 4);
  EXPECT_EQ(restart.varvalues(4, 7), static_cast<float>(HandMadeRestart::flow(4, 6)));
}

TEST_F(ReadRestart, SectionsThatTheHostChangesMeanwhileDoNotOverrunTheFlowArray) {
  for (const bool dblprec : {false, true}) {
    for (const integer last : {-3, 9}) {
      const HandMadeRestart made({.layout = 1, .iformat = 2, .dblprec = dblprec});
      set_sections(made.form.sections);
      on_allocation = [last](int) {
        mod_gridvars::rstrtvarsct(1, 1) = std::min(last, 1);
        mod_gridvars::rstrtvarsct(1, 2) = std::max(last, 5);
      };
      Restart restart(2);
      // From the header's allocations on they are as wrong as if they had always been so.
      expect_refused(restart, made, last < 0 ? "count from 1" : "names variable 9");
      set_sections(made.form.sections);
      int allocations = 0;
      on_allocation = [&, change = on_allocation](int status) {
        if (++allocations == 2) change(status);
      };
      Restart later(2);
      expect_refused(later, made,
                     "the section table was changed while it was in use: variables " +
                         std::to_string(std::min(last, 1)) + " to " +
                         std::to_string(std::max(last, 5)) + " of 5");
    }
  }
}

TEST_F(ReadRestart, ModuleArraysThatTheHostReleasesMeanwhileAreErrorsOfTheRun) {
  debugprint = true;
  for (const auto& [form, release, error] : released_arrays()) {
    const HandMadeRestart made(form);
    set_sections(made.form.sections);
    p3dsetmessages([release = release](std::string_view line) {
      if (line == " Reading flow variables for grid 2") release();
    });
    Restart restart(2);
    expect_refused(restart, made, error);
  }
}

TEST_F(ReadRestart, ExtensionsAreCountedWhenTheFlowArrayHasBeenEnlarged) {
  for (const bool dblprec : {false, true}) {
    HandMadeRestart made({.layout = 101, .iformat = 2, .dblprec = dblprec, .blocks = 1});
    made.flags = {1, 41, 999};
    set_sections({{1, 5}});
    mod_gridvars::numrstrtvar(2) = 0;
    std::vector<integer> counted;
    on_allocation = [&](int) {
      const integer count = mod_gridvars::numrstrtvar(2);
      if (counted.empty() || counted.back() != count || count == 5) counted.push_back(count);
    };
    Restart restart(1);
    read_with_table_as_it_is(restart, made);
    // Told of 10 variables with none counted, of 13 with the first five.
    EXPECT_THAT(counted, dblprec ? std::vector<integer>({0, 5, 8}) : std::vector<integer>({0, 5}));
    EXPECT_EQ(mod_gridvars::numrstrtvar(2), 8);
  }
}

TEST_F(ReadRestart, SectionNumbersOutsideTheFlowArrayAreErrorsOfTheRun) {
  const HandMadeRestart made({.layout = 1, .iformat = 2});
  Restart restart(2);
  set_sections({{1, 5}});
  mod_gridvars::rstrtvarsct(1, 2) = 6;
  expect_refused(restart, made, "the section table names variable 6, the flow array has 5");
  Restart below(2);
  set_sections({{1, 5}});
  mod_gridvars::rstrtvarsct(1, 1) = 0;
  expect_refused(below, made, "the section table names variables 0 to 5, they count from 1");
  Restart lowest(2);
  mod_gridvars::rstrtvarsct(1, 1) = std::numeric_limits<integer>::min();
  expect_refused(lowest, made, "they count from 1");
  Restart many(2);
  set_sections({{1, 5}});
  mod_gridvars::nfilesect = 31;
  expect_refused(many, made, "nfilesect is 31, the section table holds 30");
  Restart leading(1);
  set_sections({{1, 3}});
  expect_refused(leading, HandMadeRestart({.layout = 101, .iformat = 2, .blocks = 1}),
                 "the section table names variable 5, the flow array has 3");
}

TEST_F(ReadRestart, ExtentsThatCannotBeMeantAreErrorsOfTheRun) {
  const HandMadeRestart made({.layout = 1, .iformat = 2});
  set_sections(made.form.sections);
  Restart negative(2);
  negative.jdim[1] = -1;
  expect_refused(negative, made, "extents of block 2 are below 0");
  Restart shorter(2);
  shorter.kdim.pop_back();
  expect_refused(shorter, made, "extents of 1 blocks for 2");
}

TEST_F(ReadRestart, AHeaderWhoseExtentsNoBlockCanHaveIsAFailedRead) {
  for (const Bytes& extents : {Bytes().i4s({2, 1, -1}), Bytes().i4s({65536, 65536, 1}),
                               Bytes().i4s({671088640, 536870912, 536870912})}) {
    calls.clear();
    write_file("restart", Bytes().i4(1).append(extents).str() + std::string(1000, '\0'));
    set_sections({{1, 5}});
    Restart restart(1);
    restart.read("restart", {.layout = 2, .iformat = 2, .blocks = 1});
    expect_failed("expected extents from 0 on, and points that 32 bits can count");
    EXPECT_THAT(calls, ElementsAre("dispreadwrite(1, 40, 200, restart, 2, F, -, -, T, -, -)",
                                   "checkallocationerror(0)", "dispfilereaderror()"));
    EXPECT_FALSE(restart.varvalues.allocated());
    EXPECT_FALSE(sqvar.allocated());
  }
}

TEST_F(ReadRestart, AnUnknownLayoutIsAnErrorOfTheRun) {
  HandMadeRestart made({.layout = 102, .iformat = 2, .blocks = 1});
  made.form.layout = 4;
  Restart restart(1);
  set_sections({{1, 5}});
  expect_refused(restart, made, "4 is no restart layout");
  EXPECT_EQ(calls.front(), "dispreadwrite(1, 0, 0, restart, 2, F, -, -, T, -, -)");
}

TEST_F(ReadRestart, VariableCountsThatTheFileCannotHoldTakeNoMemory) {
  write_file("restart", Bytes().i4(1).i4s({100, 100, 100, 2000}));
  mod_gridvars::numrstrtvar.fill(0);
  Restart restart(1);
  restart.idim = restart.jdim = restart.kdim = {100};
  restart.read("restart", {.layout = 3, .iformat = 2});
  expect_failed("expected the flow variables of 1000000 points");
  EXPECT_FALSE(restart.varvalues.allocated());
}

TEST_F(ReadRestart, ManyVariablesOfASmallBlockTakeNoMemoryForALargeOne) {
  // The flow array would have the first block's rows at the second block's points.
  write_file("restart", Bytes().i4(2).i4s({1, 1, 1, 5000}).i4s({100, 100, 100, 1}));
  mod_gridvars::numrstrtvar.fill(0);
  Restart restart(2);
  restart.idim = restart.jdim = restart.kdim = {1, 100};
  restart.read("restart", {.layout = 3, .iformat = 2});
  expect_failed("expected the flow variables of 1000001 points");
  EXPECT_FALSE(restart.varvalues.allocated());
}

TEST_F(ReadRestart, AFlowOfAGigabyteThatTheFileDoesNotHoldIsAllocatedAndKeepsWhatIsThere) {
  // 53,000,001 points of 5 variables.
  set_sections({{1, 5}});
  Restart restart(2);
  restart.idim = {1, 53'000};
  restart.jdim = {1, 1000};
  restart.kdim = {1, 1};
  const Bytes header = Bytes().i4(7).r4(.5F).i4(2).i4s({1, 1, 1, 53'000, 1000, 1});
  write_file("restart", Bytes(header).r4s({1, 2, 3, 4, 5, 6, 7}).str() + "xyz");
  restart.read("restart", {.layout = 1, .iformat = 2});
  expect_failed("the end of the file");
  ASSERT_EQ(restart.varvalues.extent(2), 53'000'001);
  for (integer m = 1; m <= 5; ++m) EXPECT_EQ(restart.varvalues(m, 1), static_cast<float>(m));
  EXPECT_EQ(restart.varvalues(1, 2), 6.F);
  EXPECT_EQ(restart.varvalues(1, 3), 7.F);
}

TEST_F(ReadRestart, VariablesThatNoRecordOfATextHoldsAreZero) {
  write_file("restart", std::string("2\n2 1 1 4 1 1 1 2\n1 2 3 4\n5 6\n"));
  set_sections({{2, 3}});
  mod_gridvars::numrstrtvar.fill(0);
  Restart restart(2);
  restart.idim = {2, 1};
  restart.jdim = restart.kdim = {1, 1};
  restart.read("restart", {.layout = 3, .iformat = 1});
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(vector_of(restart.varvalues), (std::vector<float>{0, 1, 3, 0, 0, 2, 4, 0, 0, 5, 6, 0}));
}

TEST_F(ReadRestart, AVariableOfTwoSectionsOfATextKeepsItsValueWhereTheSecondLeavesItOut) {
  write_file("restart", std::string("7 .5 1\n1 1 1\n1 2\n,3\n"));
  set_sections({{1, 2}, {2, 3}});
  Restart restart(1);
  restart.idim = restart.jdim = restart.kdim = {1};
  restart.read("restart", {.layout = 1, .iformat = 1});
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(restart.varvalues(2, 1), 2.F);
  EXPECT_EQ(restart.varvalues(3, 1), 3.F);
}

TEST_F(ReadRestart, UnknownFormatsReadNothing) {
  for (const int layout : {1, 2, 3, 101}) {
    calls.clear();
    messages.clear();
    Restart restart(2);
    sqvar.deallocate();
    write_file("restart", std::string("left"));
    Restart open(2);
    open.read("restart", {.layout = 1, .iformat = 0});
    ASSERT_TRUE(is_open("restart"));
    calls.clear();
    messages.clear();
    restart.read("missing", {.layout = layout, .iformat = 7, .dblprec = false});
    EXPECT_FALSE(restart.varvalues.allocated());
    EXPECT_FALSE(restart.auxvalues.allocated());
    EXPECT_THAT(messages, ElementsAre(" Number of grids is 1"));
    EXPECT_EQ(sqvar.allocated(), layout == 2);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_FALSE(is_open("restart"));
    if (layout == 3) {
      EXPECT_EQ(mod_gridvars::numrstrtvar(1), 0);  // of the one block that is not read
    }
  }
}

TEST_F(ReadRestart, ValuesLeftOutOfTextAreZero) {
  write_file("restart", std::string("1 .5 1\n1 1 2\n7,,,/\n"));
  set_sections({{1, 2}});
  Restart restart(1);
  restart.idim = {1};
  restart.jdim = {1};
  restart.kdim = {2};
  restart.read("restart", {.layout = 1, .iformat = 1});
  EXPECT_EQ(vector_of(restart.varvalues), (std::vector<float>{7, 0, 0, 0}));
}

}  // namespace
}  // namespace mod_p3dgrid
