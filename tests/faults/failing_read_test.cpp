/// Reads, one system call after the other failing, interrupted or short.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "MOD_P3DReader.hpp"
#include "faults/attempt.hpp"
#include "faults/system_calls.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;
using mod_p3dgrid::p3dlastfailure;

/// A read takes so few bytes that a small file needs many.
constexpr std::size_t few_bytes = 32;

class FailingReads : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  struct Watched {
    Outcome outcome;
    int calls;  ///< of the planned kind
  };

  static Watched run(const Operation& operation, const CallPlan& plan) {
    place_files(operation);
    begin_run();
    const Started started = operation.start();
    const CallWatch watch(plan);
    Outcome outcome = finish(started);
    return {std::move(outcome), CallWatch::count(plan.call)};
  }

  /// Calls `check(operation, outcome, undisturbed)` for runs in which each call of a kind in turn
  /// goes as planned.
  template <class Check>
  void for_each_call(CallPlan plan, Check check) {
    for (const Operation& operation : GetParam().all()) {
      const Outcome undisturbed = run(operation, {}).outcome;
      ASSERT_EQ(undisturbed.end, End::done) << operation.name << ": " << undisturbed.message;
      for (plan.nth = 1;; ++plan.nth) {
        const Watched watched = run(operation, plan);
        if (watched.calls < plan.nth) break;
        check(operation, watched.outcome, undisturbed);
        if (HasFatalFailure()) {
          ADD_FAILURE() << operation.name << ", " << name_of(plan.call) << " " << plan.nth << ": "
                        << watched.outcome.message;
          return;
        }
        ++faults_injected;
      }
    }
    std::printf("%s: %d times %s with %s\n", GetParam().name, std::exchange(faults_injected, 0),
                name_of(plan.call), std::generic_category().message(plan.error).c_str());
  }

  static void expect_same(const Operation&, const Outcome& outcome, const Outcome& undisturbed) {
    ASSERT_EQ(outcome.end, End::done);
    ASSERT_EQ(outcome.result, undisturbed.result);
  }

  int faults_injected = 0;
};

TEST_P(FailingReads, ErrorsOfTheDiskAreReportedOnceWithTheirReason) {
  const std::string reason = std::generic_category().message(EIO);
  for_each_call({.call = Call::read, .error = EIO, .most_bytes = few_bytes},
                [&](const Operation& operation, const Outcome& outcome, const Outcome&) {
                  ASSERT_EQ(outcome.end, End::reported);
                  ASSERT_NE(p3dlastfailure().found.find(reason), std::string::npos);
                  ASSERT_TRUE(operation.files.contains(p3dlastfailure().file));
                  ASSERT_EQ(p3dlastfailure().status, EIO);
                });
}

TEST_P(FailingReads, InterruptedCallsChangeNothing) {
  for (const Call call : {Call::open, Call::read, Call::pread, Call::close}) {
    for_each_call({.call = call, .error = EINTR, .most_bytes = few_bytes}, expect_same);
  }
}

TEST_P(FailingReads, ShortReadsChangeNothing) {
  for (const Operation& operation : GetParam().all()) {
    const Outcome undisturbed = run(operation, {}).outcome;
    for (const std::size_t bytes : {std::size_t{1}, std::size_t{7}}) {
      const Outcome outcome = run(operation, {.most_bytes = bytes}).outcome;
      ASSERT_EQ(outcome.end, End::done) << operation.name << ": " << outcome.message;
      ASSERT_EQ(outcome.result, undisturbed.result) << operation.name;
    }
  }
}

TEST_P(FailingReads, FilesThatCannotBeOpenedAreErrorsOfTheRun) {
  for (const int error : {EACCES, EMFILE, EIO}) {
    const std::string reason = std::generic_category().message(error);
    for_each_call({.call = Call::open, .error = error},
                  [&](const Operation&, const Outcome& outcome, const Outcome&) {
                    ASSERT_EQ(outcome.end, End::failed);
                    ASSERT_NE(outcome.message.find(reason), std::string::npos) << outcome.message;
                  });
  }
}

TEST_P(FailingReads, FilesThatCannotBeLookedAtAreErrorsOrRead) {
  for (const Call call : {Call::fstat, Call::stat, Call::lstat}) {
    for_each_call({.call = call, .error = EIO},
                  [](const Operation&, const Outcome& outcome, const Outcome& undisturbed) {
                    if (outcome.end == End::failed) return;
                    ASSERT_EQ(outcome.end, End::done);
                    ASSERT_EQ(outcome.result, undisturbed.result);
                  });
  }
}

TEST_P(FailingReads, FilesThatCannotBePositionedAreReadThrough) {
  for_each_call({.call = Call::lseek, .error = ESPIPE, .most_bytes = few_bytes}, expect_same);
}

TEST_P(FailingReads, CloseSaysNothingOfFilesThatWereRead) {
  if (GetParam().all == combinations) GTEST_SKIP() << "closes a file that it writes too";
  for_each_call({.call = Call::close, .error = EIO}, expect_same);
}

TEST_P(FailingReads, FilesThatShrinkAreReportedOnce) {
  if (GetParam().all == restart_checks) GTEST_SKIP() << "reads two files";
  for (const Operation& operation : GetParam().all()) {
    if (operation.needed == 0) continue;
    for (int nth = 1;; ++nth) {
      const auto shrink = [&] { std::filesystem::resize_file(operation.input, 0); };
      const CallPlan plan{
          .call = Call::read, .nth = nth, .most_bytes = few_bytes, .before = shrink};
      const Watched watched = run(operation, plan);
      if (watched.calls < nth) break;
      // What was read before may have been all that was needed.
      if (watched.outcome.end == End::done) continue;
      ASSERT_EQ(watched.outcome.end, End::reported)
          << operation.name << ", read " << nth << ": " << watched.outcome.message;
      ++faults_injected;
    }
  }
  std::printf("%s: %d times shrunk\n", GetParam().name, faults_injected);
}

INSTANTIATE_TEST_SUITE_P(All, FailingReads, ::testing::ValuesIn(reading_groups()),
                         [](const auto& group) { return group.param.name; });

/// A header of text whose repeat counts are looked at before memory is taken.
class ManyBlocksOfText : public InScratchFolder {
 protected:
  // Beyond what is taken on trust.
  void SetUp() override {
    // As many lines as blocks, and the extents in fewer bytes than there are of them.
    write_file("grid", "1100000\n3300000*1\n" + std::string(1100000, '\n'));
  }
  static int blocks_read(const CallPlan& plan) {
    const CallWatch watch(plan);
    integer nblocks = 0, ndim = 0, npoints = 0;
    mod_p3dgrid::readp3dgridheader("grid", 1, nblocks, ndim, true, npoints);
    return npoints;
  }
  using integer = mod_p3dgrid::integer;
};

TEST_F(ManyBlocksOfText, AreCountedInSpiteOfInterruptions) {
  EXPECT_EQ(blocks_read({}), 1100000);
  EXPECT_EQ(blocks_read({.call = Call::pread, .nth = 1, .error = EINTR}), 1100000);
  EXPECT_EQ(blocks_read({.call = Call::pread, .most_bytes = 1000}), 1100000);
  EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
}

TEST_F(ManyBlocksOfText, ErrorsWhileCountingAreReportedWithTheirReason) {
  EXPECT_EQ(blocks_read({.call = Call::pread, .nth = 1, .error = EIO}), 0);
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_EQ(p3dlastfailure().found, std::generic_category().message(EIO));
}

}  // namespace
}  // namespace faults
