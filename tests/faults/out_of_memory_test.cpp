/// Memory that runs out at every place where some is asked for.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <new>
#include <set>
#include <string>

#include "MOD_P3DReader.hpp"
#include "faults/attempt.hpp"
#include "faults/child.hpp"
#include "faults/memory.hpp"
#include "faults/restart_forms.hpp"
#include "faults/system_calls.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;

std::ptrdiff_t open_files() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class OutOfMemory : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  OutOfMemory() { units_stay_open = false; }

  struct Tried {
    Outcome outcome;
    bool reached;  ///< the allocation that was to fail
  };

  static Tried run(const Started& started, FailingAllocations which, std::int64_t nth) {
    const Watch watch(which, nth);
    Outcome outcome = finish(started);
    return {std::move(outcome), Watch::allocations() >= nth};
  }

  /// Every allocation in turn fails, alone or with all that follow; after each failure the same
  /// operation is carried out with memory.
  void fail_every_allocation(const Operation& operation, FailingAllocations which) {
    place_files(operation);
    begin_run();
    const Outcome undisturbed = finish(operation.start());
    ASSERT_EQ(undisturbed.end, End::done) << operation.name << ": " << undisturbed.message;
    for (std::int64_t nth = 1;; ++nth) {
      place_files(operation);
      const Tried tried = run(operation.start(), which, nth);
      if (!tried.reached) return;
      ++faults_injected;
      check(operation, nth, tried.outcome, undisturbed);
      place_files(operation);
      const Outcome later = finish(operation.start());
      ASSERT_EQ(later.end, End::done)
          << operation.name << ", after " << nth << ": " << later.message;
      ASSERT_EQ(later.result, undisturbed.result) << operation.name << ", after " << nth;
      if (HasFatalFailure()) return;
    }
  }

  void check(const Operation& operation, std::int64_t nth, const Outcome& outcome,
             const Outcome& undisturbed) {
    const bool told_in_words =
        outcome.end == End::failed && outcome.message.find("memory") != std::string::npos;
    // The host has been given the status, and goes on: the library does what it can without.
    const bool told_as_status = outcome.refused_allocations > 0;
    ASSERT_TRUE(told_in_words || (told_as_status && outcome.end != End::out_of_hand))
        << operation.name << ", allocation " << nth << ": " << outcome.message;
    if (outcome.end == End::done) {
      ASSERT_EQ(outcome.result, undisturbed.result) << operation.name << ", allocation " << nth;
    }
    ++ends[told_as_status ? "checkallocationerror" : "fatal error"];
  }

  int faults_injected = 0;
  std::map<std::string, int> ends;
};

TEST_P(OutOfMemory, IsToldAndLeavesNothingBehind) {
  std::ptrdiff_t files_before = 0;
  for (const auto which : {FailingAllocations::one, FailingAllocations::all_from_there}) {
    for (const Operation& operation : GetParam().all()) {
      fail_every_allocation(operation, which);
      if (HasFatalFailure()) return;
      begin_run();
      if (files_before == 0) files_before = open_files();
      ASSERT_EQ(open_files(), files_before) << operation.name;
    }
  }
  std::printf("%s: %d refused allocations", GetParam().name, faults_injected);
  for (const auto& [end, count] : ends) std::printf(", %s %d", end.c_str(), count);
  std::printf("\n");
}

TEST_P(OutOfMemory, AHostWithoutHandlersEndsWithAMessageAndStatusTwo) {
  const Operation operation = GetParam().all().back();
  place_files(operation);
  begin_run();
  const Started started = operation.start();
  for (const int nth : {1, 2, 3}) {
    const ChildEnd end = run_in_child([&] {
      new Watch(FailingAllocations::all_from_there, nth);
      started.call();
    });
    ASSERT_EQ(end.status, 2) << nth << ": " << end.error;
    ASSERT_EQ(end.error, "mod_p3dgrid: out of memory\n");
  }
}

INSTANTIATE_TEST_SUITE_P(All, OutOfMemory, ::testing::ValuesIn(all_groups()),
                         [](const auto& group) { return group.param.name; });

class FailuresWithoutMemory : public InScratchFolder {};

TEST_F(FailuresWithoutMemory, FlowThatCannotBeHadHasItsExtentsWhenTheHostIsTold) {
  for (const bool dblprec : {false, true}) {
    const HandMadeRestart made({.layout = 1, .iformat = 2, .dblprec = dblprec});
    write_file("restart", made.bytes());
    int told = 0;
    for (std::int64_t nth = 1, reached = nth; reached >= nth; ++nth) {
      begin_run();
      set_sections(made.form.sections);
      Restart restart(2);
      on_allocation = [&](int status) {
        if (status != mod_p3dgrid::out_of_memory || restart.varvalues.extent(1) == 0) return;
        ++told;
        EXPECT_FALSE(restart.varvalues.allocated());
        EXPECT_EQ(restart.varvalues.extent(1), 5);
        EXPECT_EQ(restart.varvalues.extent(2), 7);
      };
      const Watch watch(FailingAllocations::one, nth);
      try {
        restart.read("restart", made.form);
      } catch (const RunEnded&) {  // some allocations are not the host's to know
      }
      reached = Watch::allocations();
    }
    EXPECT_EQ(told, 1) << dblprec;
  }
}

TEST_F(FailuresWithoutMemory, AFullDiskAtTheEndOfTheRunIsStillTold) {
  units_stay_open = true;
  const Operation operation = restart_writes().front();
  const Started started = operation.start();
  const ChildEnd end = run_in_child([&] {
    started.call();
    new CallWatch({.call = Call::pwrite, .nth = 1, .error = ENOSPC});
    new Watch(FailingAllocations::all_from_there, 1);
  });
  EXPECT_EQ(end.status, 2);
  EXPECT_EQ(end.error, "mod_p3dgrid: cannot write\n");
}

TEST_F(FailuresWithoutMemory, NamesThatAreTooLongAreStillRefused) {
  const std::string name(200, 'x');
  for (const auto which : {FailingAllocations::one, FailingAllocations::all_from_there}) {
    const Outcome outcome = [&] {
      const Watch watch(which, 1);
      return finish({[&] { mod_p3dgrid::FileName refused(name); }, {}});
    }();
    EXPECT_EQ(outcome.end, End::failed);
    EXPECT_EQ(outcome.message, "out of memory");
  }
}

TEST_F(FailuresWithoutMemory, ControlCharactersInNamesAreNeverShownAsTheyAre) {
  const mod_p3dgrid::FileName name(std::string(30, '\n'));
  mod_p3dgrid::integer nblocks = 0;
  mod_p3dgrid::integer ndim = 0;
  const Started started{[&] { mod_p3dgrid::readp3dgridheader(name, 0, nblocks, ndim, true); }, {}};
  std::set<std::string> messages;
  for (const auto which : {FailingAllocations::one, FailingAllocations::all_from_there}) {
    for (std::int64_t nth = 1, reached = nth; reached >= nth; ++nth) {
      const Outcome outcome = [&] {
        const Watch watch(which, nth);
        Outcome ended = finish(started);
        reached = Watch::allocations();
        return ended;
      }();
      EXPECT_EQ(outcome.end, End::failed);
      EXPECT_EQ(outcome.message.find('\n'), std::string::npos);
      messages.insert(outcome.message);
    }
  }
  EXPECT_TRUE(messages.contains("out of memory"));
  EXPECT_TRUE(messages.contains("cannot open"));
  EXPECT_GE(messages.size(), 3u);
}

/// What the host throws is the host's: it is not taken for memory that the library lacks.
TEST_F(FailuresWithoutMemory, ABadAllocOfTheHostGoesThrough) {
  const Operation operation = grid_reads().front();
  place_files(operation);
  const Started started = operation.start();
  int ends = 0;
  mod_p3dgrid::p3dsetrunend([&](const mod_p3dgrid::RunEnd&) {
    ++ends;
    throw std::bad_alloc();
  });
  on_allocation = [](int) { throw std::bad_alloc(); };
  EXPECT_THROW(started.call(), std::bad_alloc);
  EXPECT_EQ(ends, 0);
  on_allocation = nullptr;
  on_read_error = [] { throw std::bad_alloc(); };
  write_file("grid", "");
  EXPECT_THROW(started.call(), std::bad_alloc);
  EXPECT_EQ(ends, 0);
  // One that the handler of the run's end throws goes through too, and is not met by a second end.
  std::filesystem::remove("grid");
  EXPECT_THROW(started.call(), std::bad_alloc);
  EXPECT_EQ(ends, 1);
  // After all that, memory that runs out in the library is a fatal error.
  const Watch watch(FailingAllocations::one, 1);
  EXPECT_THROW(started.call(), std::bad_alloc);
  EXPECT_EQ(ends, 2);
}

}  // namespace
}  // namespace faults
