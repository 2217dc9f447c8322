#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "MOD_P3DReader.hpp"
#include "state/messages.hpp"
#include "state/run_end.hpp"
#include "state/unit.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid {
namespace {

using test_support::messages;
using test_support::RunEnded;
using ::testing::ElementsAre;

class ModuleState : public test_support::InScratchFolder {};
class Messages : public test_support::InScratchFolder {};
class RunEnds : public test_support::InScratchFolder {};

/// The state before any test has touched it.
const bool debug_at_start = static_cast<bool>(debugprint);
const bool arrays_at_start = nfvar.allocated() || sqvar.allocated() || dqvar.allocated();

TEST_F(ModuleState, StartsWithProgressMessagesOnAndArraysUnallocated) {
  EXPECT_TRUE(debug_at_start);
  EXPECT_FALSE(arrays_at_start);
}

TEST_F(ModuleState, DebugSwitchIsCopied) {
  p3dsetdebug(false);
  EXPECT_FALSE(debugprint);
  p3dsetdebug(true);
  EXPECT_TRUE(debugprint);
}

TEST_F(ModuleState, HoldsFifteenBlankTemporaryFileNamesAndThreeFlags) {
  EXPECT_EQ(tmpfile.size(), 15);
  EXPECT_EQ(tmpfile(15).padded(), std::string(40, ' '));
  EXPECT_EQ(iflag.size(), 3);
}

TEST_F(ModuleState, UnitNumbersAreTheFixedOnes) {
  EXPECT_EQ(unit_number::grid, 13);
  EXPECT_EQ(unit_number::grid_header, 22);
  EXPECT_EQ(unit_number::restart_read, 201);
  EXPECT_EQ(unit_number::restart_write, 301);
  EXPECT_EQ(unit_number::tecplot, 594);
}

TEST_F(Messages, BeginWithABlankAndKeepNumbersApart) {
  message("Number of grids is ", 2);
  message("for block ", 3, " in");
  message("a", "b");
  message("n", 1, 2, "x");
  message("");
  EXPECT_THAT(messages,
              ElementsAre(" Number of grids is 2", " for block 3 in", " ab", " n 1 2 x", " "));
}

TEST_F(Messages, FixedColumnsOverflowToAsterisks) {
  EXPECT_EQ(column(12, 5), "   12");
  EXPECT_EQ(column(-1234, 5), "-1234");
  EXPECT_EQ(column(100000, 5), "*****");
}

TEST_F(Messages, GoToStandardOutputByDefault) {
  p3dsetmessages({});
  ::testing::internal::CaptureStdout();
  message("Number of grids is ", 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), " Number of grids is 1\n");
}

TEST_F(RunEnds, HandlerSeesAHaltAndAnError) {
  try {
    stop_run();
    FAIL();
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 0);
    EXPECT_STREQ(end.what(), "");
  }
  try {
    fail_run(message_of("cannot open", "x.p3d", ENOENT));
    FAIL();
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 2);
    EXPECT_STREQ(end.what(), "cannot open x.p3d: No such file or directory");
  }
}

TEST_F(RunEnds, ControlCharactersInNamesAreShownEscaped) {
  try {
    fail_run(message_of("cannot open", "a\n\x1b[2Jb", ENOENT));
    FAIL();
  } catch (const RunEnded& end) {
    EXPECT_STREQ(end.what(), R"(cannot open a\n\x1b[2Jb: No such file or directory)");
  }
  try {
    fail_run(std::string("grid a\tb: 5 points"));
    FAIL();
  } catch (const RunEnded& end) {
    EXPECT_STREQ(end.what(), R"(grid a\tb: 5 points)");
  }
}

/// Opens a file for text, writes a number into it and leaves it open.
void leave_a_file_open(const char* name) {
  const integer number = 42;
  const test_support::Unit unit(unit_number::grid, 1);
  unit.open(name, recordio::OpenStatus::unknown);
  unit.write({recordio::scalar(number)});
}

using RunEndsDeathTest = RunEnds;

TEST_F(RunEndsDeathTest, AHaltByDefaultEndsTheProcessWithStatusZeroAndCompleteFiles) {
  EXPECT_EXIT(
      {
        p3dsetrunend({});
        leave_a_file_open("left.txt");
        stop_run();
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(test_support::read_file("left.txt"), " 42\n");
}

TEST_F(RunEndsDeathTest, AnErrorByDefaultIsOneLineOnStandardErrorAndStatusTwo) {
  EXPECT_EXIT(
      {
        p3dsetrunend({});
        leave_a_file_open("left.txt");
        fail_run(message_of("cannot open", "x.p3d", ENOENT));
      },
      ::testing::ExitedWithCode(2),
      "^mod_p3dgrid: cannot open x.p3d: No such file or directory\n$");
  EXPECT_EQ(test_support::read_file("left.txt"), " 42\n");
}

TEST_F(RunEndsDeathTest, AnErrorByDefaultIsOneLineWhateverTheNameHolds) {
  EXPECT_EXIT(
      {
        p3dsetrunend({});
        test_support::Unit(unit_number::grid, 1).open("no\nfile", recordio::OpenStatus::old);
      },
      ::testing::ExitedWithCode(2), R"(^mod_p3dgrid: cannot open no\\nfile: No such file)");
}

TEST_F(RunEndsDeathTest, AHandlerThatReturnsIsFollowedByTheDefault) {
  EXPECT_EXIT(
      {
        p3dsetrunend([](const RunEnd&) {});
        stop_run();
      },
      ::testing::ExitedWithCode(0), "^$");
}

TEST_F(RunEndsDeathTest, FilesLeftOpenAreCompleteWhenTheRunSimplyEnds) {
  EXPECT_EXIT(
      {
        leave_a_file_open("left.txt");
        std::exit(7);
      },
      ::testing::ExitedWithCode(7), "^$");
  EXPECT_EQ(test_support::read_file("left.txt"), " 42\n");
}

TEST_F(RunEndsDeathTest, AFlushThatFailsWhenTheRunEndsIsAnErrorOfTheRun) {
  EXPECT_EXIT(
      {
        leave_a_file_open("/dev/full");
        std::exit(0);
      },
      ::testing::ExitedWithCode(2),
      "^mod_p3dgrid: cannot write /dev/full: No space left on device\n$");
}

TEST_F(RunEndsDeathTest, OneFileThatCannotBeFlushedKeepsNoOtherFromIt) {
  EXPECT_EXIT(
      {
        leave_a_file_open("/dev/full");  // on the unit that is closed first
        const integer number = 43;
        const test_support::Unit unit(unit_number::restart_write, 1);
        unit.open("left.txt", recordio::OpenStatus::unknown);
        unit.write({recordio::scalar(number)});
        std::exit(0);
      },
      ::testing::ExitedWithCode(2), "cannot write /dev/full");
  EXPECT_EQ(test_support::read_file("left.txt"), " 43\n");
}

TEST_F(Messages, TextsThatEndInDigitsAreNoNumbers) {
  message("Writing to Tecplot file ", "out1", "...");
  EXPECT_THAT(messages, ElementsAre(" Writing to Tecplot file out1..."));
}

TEST_F(Messages, ASinkMayReplaceItself) {
  p3dsetmessages([](std::string_view line) {
    p3dsetmessages([](std::string_view next) { messages.emplace_back(next); });
    messages.emplace_back(line);
  });
  message("a");
  message("b");
  EXPECT_THAT(messages, ElementsAre(" a", " b"));
}

}  // namespace
}  // namespace mod_p3dgrid
