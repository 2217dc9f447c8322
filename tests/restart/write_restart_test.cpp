#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class WriteRestart : public InScratchFolder {
 protected:
  WriteRestart() {
    nstep = HandMadeRestart::steps;
    dtau = HandMadeRestart::step_size;
    iflag(1) = 999;
  }

  /// The file after the unit that the operation leaves open has been closed.
  static std::string written(const Restart& restart, const RestartForm& form, int nparamrows = 99) {
    restart.write("restart", form, nparamrows);
    EXPECT_TRUE(is_open("restart"));
    p3dcloseunit(301);
    return read_file("restart");
  }

  static Restart filled(int blocks, int variables) {
    Restart restart(blocks);
    restart.fill(variables);
    return restart;
  }

  /// Writing ends the run with an error that holds `words`, before the file is touched.
  static void expect_refused(const Restart& restart, const RestartForm& form,
                             const std::string& words, int nparamrows = 99) {
    write_file("restart", std::string("as it was"));
    try {
      restart.write("restart", form, nparamrows);
      FAIL() << "written";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
    EXPECT_EQ(read_file("restart"), "as it was");
  }
};

TEST_F(WriteRestart, AnnouncesItselfAndChecksItsCopies) {
  set_sections({{1, 5}});
  filled(2, 5).write("restart", {.layout = 1, .iformat = 0, .dblprec = false});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 20, 300, restart, 0, F, -, -, T, -, -)"));
  calls.clear();
  filled(1, 5).write("restart",
                     {.layout = 101, .iformat = 2, .dblprec = true, .multiblock = false});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 20, 300, restart, 2, T, -, -, F, -, -)",
                                 "checkallocationerror(0)", "checkallocationerror(0)"));
  calls.clear();
  ASSERT_EQ(sqvar.allocate(2, 4), allocation_done);
  std::ranges::fill(sqvar.span(), 1.F);
  filled(2, 5).write("restart", {.layout = 2, .iformat = 1});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 40, 200, restart, 1, F, -, -, T, -, -)",
                                 "checkallocationerror(0)"));
  calls.clear();
  filled(2, 5).write("restart", {.layout = 3, .iformat = 1});
  EXPECT_THAT(calls, ElementsAre("dispreadwrite(2, 50, 200, restart, 1, F, -, -, T, -, -)",
                                 "checkallocationerror(0)"));
}

TEST_F(WriteRestart, PrintsALinePerBlockWhateverTheDebugSwitch) {
  p3dsetdebug(false);
  set_sections({{1, 5}});
  filled(2, 5).write("restart", {.layout = 1});
  EXPECT_THAT(messages, ElementsAre(" Writing flow variables for grid 1",
                                    " Writing flow variables for grid 2"));
}

TEST_F(WriteRestart, LeavesItsUnitOpenAndClosesTheReadersUnit) {
  write_file("broken", std::string("x"));
  Restart failed(1);
  failed.read("broken", {.layout = 1, .iformat = 0});
  ASSERT_TRUE(is_open("broken"));
  set_sections({{1, 5}});
  filled(1, 5).write("restart", {.layout = 1});
  EXPECT_TRUE(is_open("restart"));
  EXPECT_FALSE(is_open("broken"));
}

TEST_F(WriteRestart, FileIsCompleteWhenTheHostClosesTheUnit) {
  set_sections({{1, 5}});
  const HandMadeRestart made({.layout = 1, .iformat = 0});
  const Restart restart = filled(2, 5);
  restart.write("restart", made.form);
  EXPECT_NE(read_file("restart"), made.rounded().bytes());
  p3dcloseunit(301);
  EXPECT_EQ(read_file("restart"), made.rounded().bytes());
}

using WriteRestartDeathTest = WriteRestart;

TEST_F(WriteRestartDeathTest, FileIsCompleteWhenTheRunSimplyEnds) {
  set_sections({{1, 5}});
  const HandMadeRestart made({.layout = 1, .iformat = 0});
  EXPECT_EXIT(
      {
        filled(2, 5).write("restart", made.form);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(read_file("restart"), made.rounded().bytes());
}

TEST_F(WriteRestart, CreatesMissingParametersFromTheOtherPrecision) {
  set_sections({});
  ASSERT_EQ(sqvar.allocate(2, 4), allocation_done);
  for (int b = 1; b <= 2; ++b) {
    for (int m = 1; m <= 4; ++m) sqvar(b, m) = static_cast<float>(b) + 0.1F * static_cast<float>(m);
  }
  const std::string text = written(filled(3, 5), {.layout = 2, .iformat = 1, .blocks = 3}, 2);
  ASSERT_EQ(dqvar.extent(1), 3);
  for (int b = 1; b <= 3; ++b) {
    for (int m = 1; m <= 4; ++m) {
      EXPECT_EQ(dqvar(b, m), static_cast<double>(sqvar(std::min(b, 2), m)));
    }
  }
  // Block 3 is written with block 2's parameters.
  const std::string row = text.substr(text.rfind('\n', text.size() - 2) + 1);
  const std::string before = text.substr(0, text.size() - row.size());
  EXPECT_EQ(before.substr(before.rfind('\n', before.size() - 2) + 1), row);

  sqvar.deallocate();
  static_cast<void>(written(filled(3, 5), {.layout = 2, .iformat = 2, .blocks = 3}, 1));
  ASSERT_EQ(sqvar.extent(1), 3);
  EXPECT_EQ(sqvar(3, 4), static_cast<float>(dqvar(1, 4)));
}

TEST_F(WriteRestart, ParametersOfTheNeededPrecisionAreTakenEvenIfTheOtherIsAllocated) {
  set_sections({});
  ASSERT_EQ(sqvar.allocate(1, 4), allocation_done);
  ASSERT_EQ(dqvar.allocate(1, 4), allocation_done);
  std::ranges::fill(sqvar.span(), 1.F);
  std::ranges::fill(dqvar.span(), 2.0);
  const RestartForm form{.layout = 2, .iformat = 2, .blocks = 1, .multiblock = false};
  RestartForm wide = form;
  wide.dblprec = true;
  const Bytes extents = Bytes().i4s({2, 1, 2});
  EXPECT_EQ(written(filled(1, 1), form), Bytes(extents).r4s({1, 1, 1, 1}).str());
  EXPECT_EQ(written(filled(1, 1), wide), Bytes(extents).r8s({2, 2, 2, 2}).str());
}

TEST_F(WriteRestart, DoublePrecisionCreatesParametersFromSingle) {
  set_sections({});
  ASSERT_EQ(sqvar.allocate(1, 4), allocation_done);
  std::ranges::fill(sqvar.span(), .1F);
  const RestartForm form{
      .layout = 2, .iformat = 2, .dblprec = true, .blocks = 1, .multiblock = false};
  const double widened = .1F;
  EXPECT_EQ(written(filled(1, 1), form),
            Bytes().i4s({2, 1, 2}).r8s({widened, widened, widened, widened}).str());
}

TEST_F(WriteRestart, Layout2WithoutBlocksNeedsNoParameters) {
  set_sections({{1, 5}});
  EXPECT_EQ(written(filled(0, 5), {.layout = 2, .iformat = 2}, 0), Bytes().i4(0).str());
}

TEST_F(WriteRestart, TripletsAndFlowMayHaveMoreRowsThanAreWritten) {
  set_sections({{1, 5}});
  for (const bool dblprec : {false, true}) {
    const HandMadeRestart made({.layout = 100, .iformat = 2, .dblprec = dblprec});
    Restart restart = filled(2, 8);
    ASSERT_EQ(restart.auxvalues.deallocate(), allocation_done);
    ASSERT_EQ(restart.auxvalues.allocate(4, 7), allocation_done);
    for (int p = 0; p < 7; ++p) {
      for (int c = 1; c <= 3; ++c) {
        restart.auxvalues(c, p + 1) = static_cast<float>(HandMadeRestart::triplet(c, p));
      }
      restart.auxvalues(4, p + 1) = 99;
    }
    EXPECT_EQ(written(restart, made.form), made.rounded().bytes());
  }
}

TEST_F(WriteRestart, DoublePrecisionCopiesNoMoreRowsThanTheFlowHas) {
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(2) = 4;  // counted, but in no section
  const HandMadeRestart made({.layout = 1, .iformat = 2, .dblprec = true});
  EXPECT_EQ(written(filled(2, 5), made.form), made.rounded().bytes());
}

TEST_F(WriteRestart, FlagsBehindTheEndOfTheChainAskForNoVariables) {
  set_sections({{1, 5}});
  iflag(1) = 999;
  iflag(2) = iflag(3) = 1;
  const HandMadeRestart made({.layout = 101, .iformat = 2, .blocks = 1});
  EXPECT_EQ(written(filled(1, 5), made.form), made.rounded().bytes());
}

TEST_F(WriteRestart, Layout3WithoutVariableCountsWritesZerosInEitherPrecision) {
  for (const bool dblprec : {false, true}) {
    nfvar.deallocate();
    set_sections({});
    mod_gridvars::rstrtvarsct(1, 1) = 1;
    mod_gridvars::rstrtvarsct(1, 2) = 5;
    mod_gridvars::nfilesect = 1;
    mod_gridvars::numrstrtvar(2) = 5;
    const std::string bytes =
        written(filled(1, 5), {.layout = 3, .iformat = 2, .dblprec = dblprec});
    EXPECT_EQ(bytes.substr(0, 20), Bytes().i4s({1, 2, 1, 2, 0}).str());
    EXPECT_EQ(bytes.size(), 20u + 5 * 4 * (dblprec ? 8 : 4));
  }
}

TEST_F(WriteRestart, Layout100WritesTheLeadingRecordInEveryEncoding) {
  // Its first section is as long as numrstrtvar(1) says.
  set_sections({{1, 5}, {6, 7}});
  for (const int iformat : {0, 2}) {
    const HandMadeRestart made({.layout = 100, .iformat = iformat, .sections = {{1, 5}, {6, 7}}});
    EXPECT_EQ(written(filled(2, 7), made.form), made.rounded().bytes());
  }
  mod_gridvars::numrstrtvar(1) = 2;
  const HandMadeRestart shorter({.layout = 100, .iformat = 2, .sections = {{1, 2}, {6, 7}}});
  EXPECT_EQ(written(filled(2, 7), shorter.form), shorter.rounded().bytes());
  EXPECT_EQ(mod_gridvars::numrstrtvar(1), 2);
}

TEST_F(WriteRestart, ExtensionChainsOfLayout101) {
  set_sections({{1, 5}});
  for (const auto& flags : {std::vector<int>{999},
                            {41, 41, 999},
                            {1, 41, 999},
                            {1, 999},
                            {41, 999},
                            {7, 1, 999},
                            {999, 1, 1}}) {
    for (const bool dblprec : {false, true}) {
      for (std::size_t m = 0; m < 3; ++m) iflag(m + 1) = m < flags.size() ? flags[m] : 0;
      mod_gridvars::numrstrtvar(2) = 8;
      HandMadeRestart made({.layout = 101, .iformat = 0, .dblprec = dblprec, .blocks = 1});
      made.flags = flags;
      if (flags.front() == 999) made.flags = {999};
      EXPECT_EQ(written(filled(1, 13), made.form), made.rounded().bytes());
      EXPECT_EQ(mod_gridvars::numrstrtvar(1), 5);
    }
  }
}

TEST_F(WriteRestart, Layout3LeavesTheCountOfTheLastBlock) {
  set_sections({{1, 5}});
  ASSERT_EQ(nfvar.allocate(2), allocation_done);
  nfvar(1) = 7;
  nfvar(2) = 5;
  static_cast<void>(written(filled(2, 7), {.layout = 3}));
  EXPECT_EQ(mod_gridvars::numrstrtvar(1), 5);
}

TEST_F(WriteRestart, WithoutSectionsWritesOnlyMessages) {
  set_sections({});
  const HandMadeRestart made({.layout = 1, .iformat = 0, .sections = {}});
  EXPECT_EQ(written(filled(2, 5), made.form), made.rounded().header());
  EXPECT_EQ(messages.size(), 2u);
}

TEST_F(WriteRestart, WithoutARecordKeepsTheFileThatWasThere) {
  set_sections({});
  for (const int iformat : {0, 1, 2}) {
    write_file("restart", std::string("as it was"));
    EXPECT_EQ(written(filled(1, 5), {.layout = 102, .iformat = iformat, .blocks = 1}), "as it was");
  }
}

TEST_F(WriteRestart, ASectionOfNoVariablesIsAnEmptyRecord) {
  set_sections({{1, 2}, {5, 4}, {3, 3}});
  for (const int iformat : {0, 2}) {
    const HandMadeRestart made(
        {.layout = 1, .iformat = iformat, .sections = {{1, 2}, {5, 4}, {3, 3}}});
    EXPECT_EQ(written(filled(2, 5), made.form), made.rounded().bytes());
  }
  static_cast<void>(written(filled(2, 5), {.layout = 1, .iformat = 1}));
  Restart back(2);
  back.read("restart", {.layout = 1, .iformat = 1});
  EXPECT_EQ(vector_of(back.varvalues), HandMadeRestart({.layout = 1}).varvalues(3));
}

TEST_F(WriteRestart, OlderTimeLevelsAreNeverWritten) {
  set_sections({{1, 5}});
  const HandMadeRestart made({.layout = 1, .iformat = 0});
  itimeint = 3;
  EXPECT_EQ(written(filled(2, 5), made.form), made.rounded().bytes());
}

TEST_F(WriteRestart, Layout0HaltsTheRun) {
  set_sections({{1, 5}});
  EXPECT_THROW(filled(1, 5).write("restart", {.layout = 0}), RunEnded);
  EXPECT_THAT(messages, ElementsAre(" TALVEN Writer not implimented!"));
}

TEST_F(WriteRestart, UnknownFormatsWriteNothing) {
  set_sections({{1, 5}});
  filled(2, 5).write("restart", {.layout = 1, .iformat = 9});
  EXPECT_FALSE(exists("restart"));
  EXPECT_TRUE(messages.empty());
}

TEST_F(WriteRestart, TablesThatTheHostChangesMeanwhileDoNotOverrunTheFlowArray) {
  const auto expect_ended = [](const RestartForm& form, const std::string& words) {
    const Restart restart = filled(2, 5);
    try {
      restart.write("restart", form, 99);
      FAIL() << "written";
    } catch (const RunEnded& end) {
      EXPECT_THAT(end.what(), HasSubstr("changed while it was in use: variables " + words));
    }
  };
  set_sections({{1, 5}});
  on_allocation = [](int) { mod_gridvars::rstrtvarsct(1, 2) = 9; };
  expect_ended({.layout = 1, .dblprec = true}, "1 to 9 of 5");
  on_allocation = nullptr;
  set_sections({{1, 5}});
  p3dsetmessages([](std::string_view line) {
    if (line == " Writing flow variables for grid 2") iflag(1) = 1;
  });
  expect_ended({.layout = 101, .iformat = 2}, "6 to 10 of 5");
}

TEST_F(WriteRestart, ArgumentsThatCannotBeMeantEndTheRunBeforeTheFileIsTouched) {
  set_sections({{1, 6}});
  expect_refused(filled(2, 5), {.layout = 1}, "names variable 6, the flow array has 5");
  set_sections({{0, 5}});
  expect_refused(filled(2, 5), {.layout = 1}, "names variables 0 to 5");
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(1) = 4;
  expect_refused(filled(2, 5), {.layout = 1, .dblprec = true}, "the flow array has 4");
  set_sections({{1, 5}});
  mod_gridvars::nfilesect = 31;
  expect_refused(filled(2, 5), {.layout = 1}, "nfilesect is 31");
  set_sections({{1, 5}});
  expect_refused(filled(2, 5), {.layout = 55}, "55 is no restart layout");
  Restart few = filled(2, 5);
  few.idim[1] = 4;
  expect_refused(few, {.layout = 1}, "varvalues holds 7 points, 8 are needed");
  Restart many = filled(3, 5);  // the third block has no points
  many.idim = many.jdim = many.kdim = {1000, 1000, 1000};
  expect_refused(many, {.layout = 1, .blocks = 3}, "7 points, 3000000000 are needed");
  few.idim[1] = -4;
  expect_refused(few, {.layout = 1}, "extents of block 2 are below 0");
  Restart no_triplets = filled(2, 5);
  no_triplets.auxvalues.deallocate();
  expect_refused(no_triplets, {.layout = 100}, "auxvalues holds 0 points, 7 are needed");
  ASSERT_EQ(no_triplets.auxvalues.allocate(2, 7), allocation_done);
  expect_refused(no_triplets, {.layout = 100}, "auxvalues holds no three values");
}

TEST_F(WriteRestart, FlagsWithoutTheirEndEndTheRunBeforeTheFileIsTouched) {
  set_sections({{1, 5}});
  for (const auto& flags : {std::array{0, 0, 0}, {1, 41, 41}}) {
    for (std::size_t m = 0; m < 3; ++m) iflag(m + 1) = flags[m];
    expect_refused(filled(1, 13), {.layout = 101}, "iflag holds no flag 999");
  }
  iflag(1) = 1;
  iflag(2) = 999;
  expect_refused(filled(1, 9), {.layout = 101}, "names variable 10, the flow array has 9");
}

TEST_F(WriteRestart, MissingParametersEndTheRunBeforeTheFileIsTouched) {
  set_sections({{1, 5}});
  expect_refused(filled(2, 5), {.layout = 2}, "neither sqvar nor dqvar is allocated");
  ASSERT_EQ(sqvar.allocate(1, 4), allocation_done);
  expect_refused(filled(2, 5), {.layout = 2}, "sqvar holds 1 rows of 4, 2 of 4 are needed");
  expect_refused(filled(2, 5), {.layout = 2, .dblprec = true}, "sqvar holds 1 rows of 4");
  expect_refused(filled(2, 5), {.layout = 2}, "nparamrows is below 1", 0);
  sqvar.deallocate();
  ASSERT_EQ(dqvar.allocate(2, 3), allocation_done);
  expect_refused(filled(2, 5), {.layout = 2}, "dqvar holds 2 rows of 3");
}

TEST_F(WriteRestart, FewerVariableCountsThanBlocksEndTheRun) {
  set_sections({{1, 5}});
  ASSERT_EQ(nfvar.allocate(1), allocation_done);
  nfvar(1) = 5;
  expect_refused(filled(2, 5), {.layout = 3}, "nfvar holds 1 blocks, 2 are to be written");
}

TEST_F(WriteRestart, ModuleArraysThatTheHostReleasesMeanwhileAreErrorsOfTheRun) {
  for (const auto& [form, release, error] : released_arrays()) {
    const HandMadeRestart made(form);
    set_sections(form.sections);
    write_file("read", made.bytes());
    Restart restart(2);
    restart.read("read", form);
    p3dsetmessages([release = release](std::string_view line) {
      if (line == " Writing flow variables for grid 2") release();
    });
    const auto write = [&restart, &form = form] { restart.write("restart", form); };
    EXPECT_THAT(write, ::testing::ThrowsMessage<RunEnded>(HasSubstr(error)));
    p3dsetmessages({});
  }
}

}  // namespace
}  // namespace mod_p3dgrid
