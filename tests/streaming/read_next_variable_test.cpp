#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"
#include "restart/staging.hpp"
#include "support/module_state.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ReadNextVariable : public InScratchFolder {
 protected:
  Restart restart{2};
  std::vector<float> values = std::vector<float>(7, -77.F);

  void read_file_of(const HandMadeRestart& made, integer ivar) {
    write_file("restart", made.bytes());
    read(made.form, ivar);
  }
  void read(const RestartForm& form, integer ivar, const char* name = "restart") {
    readnextp3dvar(ivar, name, form.iformat, form.dblprec,
                   static_cast<integer>(restart.idim.size()), restart.blockpoints,
                   array_view<float, 2>(values.data(), 1, std::ssize(values)), restart.idim,
                   restart.jdim, restart.kdim, form.layout, form.multiblock);
  }

  void expect_refused(const RestartForm& form, integer ivar, const std::string& words) {
    write_file("restart", HandMadeRestart(form).bytes());
    try {
      read(form, ivar);
      FAIL() << "read";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
    EXPECT_THAT(values, Each(-77.F));
  }
};

TEST_F(ReadNextVariable, AnnouncesTheVariableAndChecksEachAllocation) {
  set_sections({{1, 5}});
  read_file_of(HandMadeRestart({.layout = 1, .iformat = 2}), 4);
  // Header extents, staging array, the two tables.
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(1, 20, 300, restart, 2, F, 4, -, T, -, -)",
                                 "checkallocationerror(0)", "checkallocationerror(0)",
                                 "checkallocationerror(0)", "checkallocationerror(0)"));
  EXPECT_THAT(messages, ElementsAre(" Reading flow variable 4 for grid 1",
                                    " Reading flow variable 4 for grid 2"));
}

TEST_F(ReadNextVariable, FillsRowOneOfTheResultOnly) {
  set_sections({{1, 5}});
  std::vector<float> wide(21, -77.F);
  write_file("restart", HandMadeRestart({.layout = 1, .iformat = 0}).bytes());
  readnextp3dvar(2, "restart", 0, false, 2, restart.blockpoints,
                 array_view<float, 2>(wide.data(), 3, 7), restart.idim, restart.jdim, restart.kdim,
                 1, true);
  for (std::size_t i = 0; i < wide.size(); ++i) {
    EXPECT_EQ(wide[i], i % 3 == 0
                           ? static_cast<float>(HandMadeRestart::flow(2, static_cast<int>(i / 3)))
                           : -77.F);
  }
}

TEST_F(ReadNextVariable, TakesItFromTheSectionThatHoldsIt) {
  set_sections({{1, 5}, {6, 7}});
  read_file_of(HandMadeRestart({.layout = 1, .iformat = 0, .sections = {{1, 5}, {6, 7}}}), 6);
  EXPECT_EQ(values[0], static_cast<float>(HandMadeRestart::flow(6, 0)));
  EXPECT_EQ(values[6], static_cast<float>(HandMadeRestart::flow(6, 6)));
}

TEST_F(ReadNextVariable, InNoRecordComesBackAsZeros) {
  set_sections({{1, 4}});
  mod_gridvars::numrstrtvar(1) = 5;
  read_file_of(HandMadeRestart({.layout = 1, .iformat = 0, .sections = {{1, 4}}}), 5);
  EXPECT_THAT(values, Each(0.F));
}

TEST_F(ReadNextVariable, SectionsOfNoVariablesConsumeARecord) {
  set_sections({{1, 2}, {5, 4}, {3, 3}});
  for (const int iformat : {0, 1, 2}) {
    read_file_of(
        HandMadeRestart({.layout = 1, .iformat = iformat, .sections = {{1, 2}, {5, 4}, {3, 3}}}),
        3);
    EXPECT_EQ(values[6], static_cast<float>(HandMadeRestart::flow(3, 6)));
  }
  set_sections({});
  mod_gridvars::numrstrtvar(1) = 1;
  read_file_of(HandMadeRestart({.layout = 1, .iformat = 0, .sections = {}}), 1);
  EXPECT_THAT(values, Each(0.F));
}

TEST_F(ReadNextVariable, Layout2FillsTheParametersOfItsPath) {
  set_sections({{1, 5}});
  read_file_of(HandMadeRestart({.layout = 2, .iformat = 2}), 1);
  EXPECT_FALSE(dqvar.allocated());
  EXPECT_EQ(sqvar(2, 3), static_cast<float>(HandMadeRestart::parameter(1, 3)));
  for (const int iformat : {0, 1}) {
    dqvar.deallocate();
    read_file_of(HandMadeRestart({.layout = 2, .iformat = iformat, .dblprec = true}), 1);
    EXPECT_EQ(dqvar(2, 3), HandMadeRestart::parameter(1, 3));
  }
  EXPECT_EQ(p3dre, 0);
}

TEST_F(ReadNextVariable, Layout2ConvertsTheOtherParametersBeforeTheyAreOverwritten) {
  set_sections({{1, 5}});
  ASSERT_EQ(dqvar.allocate(2, 4), allocation_done);
  std::ranges::fill(dqvar.span(), 9.0);
  const HandMadeRestart made({.layout = 2, .iformat = 2});
  const std::string whole = made.bytes();
  write_file("restart", whole.substr(0, 60));  // cut inside block 1
  read(made.form, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_EQ(sqvar(1, 1), static_cast<float>(HandMadeRestart::parameter(0, 1)));
  EXPECT_EQ(sqvar(2, 1), 9.F);
}

TEST_F(ReadNextVariable, Layout2RefusesParametersOfFewerBlocks) {
  set_sections({{1, 5}});
  ASSERT_EQ(sqvar.allocate(1, 4), allocation_done);
  expect_refused({.layout = 2, .iformat = 2}, 1, "sqvar holds 1 rows of 4, 2 of 4 are needed");
}

TEST_F(ReadNextVariable, ThatIsNoneIsAnErrorOfTheRun) {
  set_sections({{1, 5}});
  for (const integer ivar : {0, -1, 6, 2147483647}) {
    expect_refused({.layout = 1}, ivar, "there is no variable " + std::to_string(ivar));
  }
}

TEST_F(ReadNextVariable, ArraysTooSmallAreErrorsOfTheRun) {
  set_sections({{1, 5}});
  restart.blockpoints = {4, 2};
  expect_refused({.layout = 1}, 1, "blockpoints holds 6 points, 7 are needed");
  restart.blockpoints = {4, 9};
  expect_refused({.layout = 1}, 1, "varvalues holds 7 points, blockpoints sum up to 13");
  restart.blockpoints = {4, 3};
  values.pop_back();
  expect_refused({.layout = 1}, 1, "varvalues holds 6 points, 7 are needed");
  restart.idim = restart.jdim = {40000, 40000};
  restart.kdim = {1, 1};
  expect_refused({.layout = 1}, 1, "blockpoints holds 7 points, 3200000000 are needed");
  restart.idim[0] = -1;
  expect_refused({.layout = 1}, 1, "extents of block 1 are below 0");
  expect_refused({.layout = 1}, 1, "extents of block 1 are below 0");
}

TEST_F(ReadNextVariable, AnArrayWithoutAVariableHasPlaceForNoPoint) {
  set_sections({{1, 5}});
  const std::vector<integer> none{0};
  const std::vector<integer> five{5};
  try {
    readnextp3dvar(1, "restart", 2, false, 1, five, array_view<float, 2>(values.data(), 0, 5), none,
                   none, none, 1, true);
    FAIL() << "read";
  } catch (const RunEnded& end) {
    EXPECT_THAT(end.what(), HasSubstr("varvalues holds 0 points, blockpoints sum up to 5"));
  }
  EXPECT_THAT(values, Each(-77.F));
}

TEST_F(ReadNextVariable, VariablesThatTheHostCountsAnewMeanwhileAreNotOverrun) {
  set_sections({{1, 1}});
  mod_gridvars::numrstrtvar(1) = 500;
  on_allocation = [](int) { mod_gridvars::numrstrtvar(1) = 1; };
  expect_refused({.layout = 1}, 400, "there is no variable 400, numrstrtvar counts 1");
}

TEST_F(ReadNextVariable, AnUnknownLayoutIsAnErrorOfTheRun) {
  set_sections({{1, 5}});
  expect_refused({.layout = 7, .iformat = 2}, 1, "7 is no restart layout");
  EXPECT_EQ(calls.front(), "dispreadwrite(1, 0, 0, restart, 2, F, 1, -, T, -, -)");
}

TEST_F(ReadNextVariable, ATruncatedFileIsToldOnceAndLeavesTheResult) {
  for (const bool dblprec : {false, true}) {
    for (const int iformat : {0, 1, 2}) {
      set_sections({{1, 5}});
      reset_staging();
      const HandMadeRestart made({.layout = 1, .iformat = iformat, .dblprec = dblprec});
      const std::string whole = made.bytes();
      calls.clear();
      write_file("restart", whole.substr(0, whole.size() - 30));
      read(made.form, 1);
      EXPECT_EQ(count_calls("dispfilereaderror"), 1);
      EXPECT_TRUE(is_open("restart"));
      EXPECT_THAT(values, Each(-77.F));
      EXPECT_TRUE(one_variable_steps.allocated());
    }
  }
}

TEST_F(ReadNextVariable, StagingLeftByAFailedReadIsReportedAndUsedIfLargeEnough) {
  set_sections({{1, 5}});
  const HandMadeRestart made({.layout = 1, .iformat = 0});
  write_file("restart", made.header());
  read(made.form, 1);
  ASSERT_TRUE(one_variable_staging<float>.values.allocated());
  calls.clear();
  read_file_of(made, 1);
  EXPECT_THAT(calls, ElementsAre(HasSubstr("dispreadwrite"), "checkallocationerror(0)",
                                 "checkallocationerror(1)", "checkallocationerror(1)",
                                 "checkallocationerror(1)"));
  EXPECT_EQ(values[6], static_cast<float>(HandMadeRestart::flow(1, 6)));
  EXPECT_FALSE(one_variable_staging<float>.values.allocated());

  // Too small for the next file, it is reported and made anew.
  write_file("restart", made.header());
  read(made.form, 1);
  restart.idim[0] = 3;
  restart.blockpoints = {6, 3};
  values.assign(9, -77.F);
  write_file("restart", Bytes()
                            .record(Bytes().i4(1).r4(.5F).i4(2))
                            .record(Bytes().i4s({3, 1, 2}))
                            .record(Bytes().i4s({3, 1, 1}))
                            .record(Bytes().r4s({1, 2, 3, 4, 5, 6}))
                            .record(Bytes().r4s({7, 8, 9})));
  set_sections({{1, 1}});
  calls.clear();
  read(made.form, 1);
  EXPECT_EQ(calls[2], "checkallocationerror(1)");
  EXPECT_EQ(values, (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(ReadNextVariable, FailedHeadersAreToldOnce) {
  set_sections({{1, 5}});
  write_file("restart", Bytes().i4(4));
  read({.layout = 1}, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_FALSE(one_variable_staging<float>.values.allocated());
}

TEST_F(ReadNextVariable, FlagsAreReadOnlyForVariablesAboveFive) {
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(2) = 5;
  HandMadeRestart made({.layout = 101, .iformat = 2, .blocks = 1});
  restart = Restart(1);
  values.resize(4);
  made.flags = {1, 999};
  read_file_of(made, 5);
  EXPECT_THAT(iflag.span(), ElementsAre(0, 0, 0));
  read_file_of(made, 10);
  EXPECT_THAT(iflag.span(), ElementsAre(1, 999, 0));
  EXPECT_EQ(values[3], static_cast<float>(HandMadeRestart::flow(10, 3)));
  made.flags = {41, 41, 41};
  calls.clear();
  read_file_of(made, 6);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("three flags, none of them 999"));
}

TEST_F(ReadNextVariable, OlderTimeLevelsAreSkipped) {
  set_sections({{1, 5}});
  for (const bool dblprec : {false, true}) {
    HandMadeRestart made({.layout = 0, .iformat = 0, .dblprec = dblprec});
    made.time_integration = 3;
    made.older_levels = 2;
    calls.clear();
    read_file_of(made, 1);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_EQ(values[6], static_cast<float>(HandMadeRestart::flow(1, 6)));
  }
}

TEST_F(ReadNextVariable, OlderTimeLevelsNeedNoVariables) {
  for (const int iformat : {0, 2}) {
    HandMadeRestart made({.layout = 0, .iformat = iformat});
    made.time_integration = 2;  // of each block the one record is that of the older level
    set_sections({{1, 5}});
    mod_gridvars::nfilesect = 0;
    mod_gridvars::numrstrtvar(1) = 1;
    calls.clear();
    read_file_of(made, 1);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
    EXPECT_THAT(values, Each(0.F));
  }
}

TEST_F(ReadNextVariable, OlderTimeLevelsOfAbsurdSectionsAreAFailedRead) {
  for (const int iformat : {0, 2}) {
    HandMadeRestart made({.layout = 0, .iformat = iformat});
    made.time_integration = 2;
    set_sections({{1, 5}});
    mod_gridvars::nfilesect = 0;
    mod_gridvars::rstrtvarsct(1, 1) = std::numeric_limits<integer>::min();
    mod_gridvars::rstrtvarsct(1, 2) = std::numeric_limits<integer>::max();
    calls.clear();
    read_file_of(made, 1);
    EXPECT_EQ(count_calls("dispfilereaderror"), 1);
    EXPECT_THAT(p3dlastfailure().expected, HasSubstr(" more bytes"));
    reset_staging();
  }
}

TEST_F(ReadNextVariable, TextHasNoOlderTimeLevels) {
  set_sections({{1, 2}, {3, 3}});
  for (const int itime : {2, 3}) {
    HandMadeRestart made({.layout = 0, .iformat = 1, .sections = {{1, 2}, {3, 3}}});
    made.time_integration = itime;
    for (integer v = 1; v <= 3; ++v) {
      calls.clear();
      read_file_of(made, v);
      EXPECT_EQ(count_calls("dispfilereaderror"), 0);
      EXPECT_FALSE(is_open("restart"));
      for (int p = 0; p < 7; ++p) {
        EXPECT_EQ(values[static_cast<std::size_t>(p)],
                  static_cast<float>(HandMadeRestart::flow(v, p)));
      }
      EXPECT_EQ(itimeint, itime);
    }
  }
}

TEST_F(ReadNextVariable, LeavesNothingAllocatedForTheNextCallToReport) {
  set_sections({{1, 5}});
  p3dsetdebug(false);
  for (const bool dblprec : {false, true, false, true}) {
    calls.clear();
    messages.clear();
    read_file_of(HandMadeRestart({.layout = 1, .iformat = 0, .dblprec = dblprec}), 3);
    EXPECT_EQ(std::ranges::count(calls, "checkallocationerror(0)"), 4);
    EXPECT_EQ(count_calls("checkallocationerror"), 4);
    EXPECT_EQ(messages.size(), 2u);
  }
}

TEST_F(ReadNextVariable, OneOlderTimeLevelIsSkipped) {
  set_sections({{1, 5}});
  HandMadeRestart made({.layout = 0, .iformat = 2});
  made.time_integration = 2;
  made.older_levels = 1;
  read_file_of(made, 5);
  EXPECT_EQ(values[6], static_cast<float>(HandMadeRestart::flow(5, 6)));
}

TEST_F(ReadNextVariable, AHeaderWhoseExtentsNoBlockCanHaveIsAFailedRead) {
  set_sections({{1, 5}});
  write_file("restart", Bytes().i4s({2, 65536, 65536, 1, 3, 1, 1}).str() + std::string(1000, '\0'));
  read({.layout = 2, .iformat = 2}, 1);
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(1, 40, 200, restart, 2, F, 1, -, T, -, -)",
                                 "checkallocationerror(0)", "dispfilereaderror()"));
  EXPECT_THAT(p3dlastfailure().describe(), HasSubstr("block 1 of 65536 x 65536 x 1 points"));
  EXPECT_THAT(values, Each(-77.F));
}

TEST_F(ReadNextVariable, SectionsOutsideTheVariablesAreErrorsOfTheRun) {
  set_sections({{1, 5}});
  mod_gridvars::rstrtvarsct(1, 2) = 6;
  expect_refused({.layout = 1}, 1, "names variable 6, the flow array has 5");
  mod_gridvars::rstrtvarsct(1, 1) = 0;
  expect_refused({.layout = 1}, 1, "they count from 1");
  set_sections({{1, 5}});
  EXPECT_THROW(readnextp3dvar(1, "restart", 0, false, 2, restart.blockpoints,
                              array_view<float, 2>(values.data(), 0, 7), restart.idim, restart.jdim,
                              restart.kdim, 1, true),
               RunEnded);
}

TEST_F(ReadNextVariable, WithoutPointsAbsurdSectionsAreNoWork) {
  set_sections({{1, 5}});
  mod_gridvars::rstrtvarsct(1, 2) = 2147483647;
  write_file("restart", Bytes().i4s({1, 0, 1, 1}).r4s({1, 2, 3, 4}));
  restart = Restart(1);
  restart.idim = restart.blockpoints = {0};
  restart.jdim = restart.kdim = {1};
  read({.layout = 2, .iformat = 2}, 1);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0);
}

TEST_F(ReadNextVariable, TextRoundsByWayOfDoublePrecision) {
  // Just above the middle between 1 and the next single: double precision rounds it to the middle,
  // and from there it goes to the even neighbour. A whole read goes straight to single precision.
  write_file("restart", std::string("1 .5 1\n1 1 1\n 1.00000005960464477540\n"));
  set_sections({{1, 1}});
  restart = Restart(1);
  restart.idim = restart.jdim = restart.kdim = restart.blockpoints = {1};
  values.resize(1);
  read({.layout = 1, .iformat = 1}, 1);
  EXPECT_EQ(values[0], 1.F);
  restart.read("restart", {.layout = 1, .iformat = 1});
  EXPECT_EQ(restart.varvalues(1, 1), std::nextafter(1.F, 2.F));
}

TEST_F(ReadNextVariable, ExceptionsReleaseTheStaging) {
  set_sections({{1, 5}});
  p3dsetmessages([](std::string_view) { throw std::runtime_error("host"); });
  EXPECT_THROW(read_file_of(HandMadeRestart({.layout = 1}), 1), std::runtime_error);
  EXPECT_FALSE(one_variable_staging<float>.values.allocated());
}

TEST_F(ReadNextVariable, UnknownFormatsReadNothing) {
  set_sections({{1, 5}});
  read({.layout = 1, .iformat = 4}, 99, "missing");
  EXPECT_THAT(values, Each(-77.F));
  EXPECT_EQ(count_calls("checkallocationerror"), 1);  // the header's
}

/// Peak resident memory of the process in KiB.
long peak_memory() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

using ReadNextVariableDeathTest = ReadNextVariable;

TEST_F(ReadNextVariableDeathTest, HoldsOneVariableWhateverTheFileHolds) {
  // 30 variables of 1,000,000 points are 120 MB, seven times what a call may take; staging and
  // result of one variable are 8 MB.
  static constexpr integer points = 1'000'000;
  constexpr integer variables = 30;
  const std::vector<float> one(points, 0.5F);
  {
    const test_support::Unit unit(301, 0);
    unit.open("restart", recordio::OpenStatus::unknown);
    const integer extents[]{100, 100, 100};
    unit.write({recordio::values(extents, 3)});
    recordio::WriteList body(variables, recordio::values(one.data(), points));
    const float parameters[4]{};
    unit.write({recordio::values(parameters, 4)});
    unit.write(body);
    unit.close();
  }
  set_sections({{1, variables}});
  const auto read_one = [] {
    const long before = peak_memory();
    const integer extent = 100;
    const array_view<const integer, 1> extents(&extent, 1);
    const array_view<const integer, 1> all(&points, 1);
    std::vector<float> result(points);
    readnextp3dvar(7, "restart", 0, false, 1, all, array_view<float, 2>(result.data(), 1, points),
                   extents, extents, extents, 2, false);
    const long taken = peak_memory() - before;
    std::fprintf(stderr, "%ld KiB, last %g\n", taken, static_cast<double>(result.back()));
    std::exit(taken < 16'000 && result.back() == 0.5F ? 0 : 1);
  };
  EXPECT_EXIT(read_one(), ::testing::ExitedWithCode(0), "last 0.5");
}

}  // namespace
}  // namespace mod_p3dgrid
