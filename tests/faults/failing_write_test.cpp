/// Writes, one system call after the other failing, interrupted or short.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "faults/attempt.hpp"
#include "faults/child.hpp"
#include "faults/system_calls.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;

/// A write takes so few bytes that a small file needs many.
constexpr std::size_t few_written = 64;

std::string text_of(int error) {
  return std::generic_category().message(error);
}

class FailingWrites : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  FailingWrites() { units_stay_open = false; }
  ~FailingWrites() override {
    if (faults_injected > 0) std::printf("%s: %d faults\n", GetParam().name, faults_injected);
  }

  /// Files that the operation may close.
  static int most_closes(const Operation& operation) {
    return static_cast<int>(operation.files.size()) + 1;
  }

  struct Watched {
    Outcome outcome;
    int calls;  ///< of the planned kind
  };

  /// Puts a longer file in the place of the one that is written, where that replaces files.
  static void place_files_and_old_output(const Operation& operation) {
    constexpr std::size_t longer = 5000;
    place_files(operation);
    if (GetParam().all != variable_writes) write_file(operation.output, std::string(longer, '#'));
  }

  static Watched run(const Operation& operation, const CallPlan& plan) {
    place_files_and_old_output(operation);
    begin_run();
    const Started started = operation.start();
    const CallWatch watch(plan);
    Outcome outcome = finish(started);
    return {std::move(outcome), CallWatch::count(plan.call)};
  }

  static Outcome undisturbed(const Operation& operation) {
    Outcome outcome = run(operation, {}).outcome;
    EXPECT_EQ(outcome.end, End::done) << operation.name << ": " << outcome.message;
    return outcome;
  }

  /// Calls `check(operation, outcome)` for runs in which each call of a kind in turn goes as
  /// planned.
  template <class Check>
  void for_each_call(const Operation& operation, CallPlan plan, Check check) {
    for (plan.nth = 1;; ++plan.nth) {
      const Watched watched = run(operation, plan);
      if (watched.calls < plan.nth) return;
      ++faults_injected;
      check(watched.outcome);
      if (!HasFatalFailure()) continue;
      ADD_FAILURE() << operation.name << ", " << name_of(plan.call) << " " << plan.nth << ": "
                    << watched.outcome.message;
      return;
    }
  }

  static void expect_error(const Operation& operation, const Outcome& outcome, int error) {
    ASSERT_EQ(outcome.end, End::failed);
    ASSERT_NE(outcome.message.find(operation.output + ": " + text_of(error)), std::string::npos);
    expect_inputs_kept(operation);
  }

  /// What has not been written whole must still be there to be written again.
  static void expect_inputs_kept(const Operation& operation) {
    for (const auto& [name, content] : operation.files) {
      ASSERT_TRUE(exists(name)) << name;
      ASSERT_EQ(read_file(name), content) << name;
    }
  }

  int faults_injected = 0;
};

TEST_P(FailingWrites, EveryFailingWriteIsAnErrorOfTheRun) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
      for_each_call(operation, {.call = Call::pwrite, .error = error, .most_bytes = few_written},
                    [&](const Outcome& outcome) {
                      expect_error(operation, outcome, error);
                      // Nothing of the old file is left behind what has been written.
                      ASSERT_TRUE(result.starts_with(read_file(operation.output)));
                    });
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(FailingWrites, AnErrorThatOnlyShowsOnCloseIsAnErrorOfTheRun) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
      int failures = 0;
      for_each_call(operation, {.call = Call::close, .error = error}, [&](const Outcome& outcome) {
        if (outcome.end == End::done) {  // it was a file that was read
          ASSERT_EQ(outcome.result, result);
          return;
        }
        ++failures;
        expect_error(operation, outcome, error);
      });
      ASSERT_EQ(failures, 1) << operation.name;
    }
  }
}

TEST_P(FailingWrites, FilesThatCannotBeCutAreErrorsOfTheRun) {
  for (const Operation& operation : GetParam().all()) {
    int calls = 0;
    for_each_call(operation, {.call = Call::ftruncate, .error = EIO}, [&](const Outcome& outcome) {
      ++calls;
      expect_error(operation, outcome, EIO);
    });
    ASSERT_EQ(calls, GetParam().all == variable_writes ? 0 : 1) << operation.name;
  }
}

TEST_P(FailingWrites, FilesThatCannotBeOpenedAreErrorsOfTheRun) {
  for (const Operation& operation : GetParam().all()) {
    for (const int error : {EACCES, ENOSPC, EROFS}) {
      for_each_call(operation, {.call = Call::open, .error = error}, [&](const Outcome& outcome) {
        ASSERT_EQ(outcome.end, End::failed);
        ASSERT_NE(outcome.message.find(text_of(error)), std::string::npos) << outcome.message;
        expect_inputs_kept(operation);
      });
    }
  }
}

TEST_P(FailingWrites, FilesThatCannotBeLookedAtAreErrorsOfTheRun) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    int failures = 0;
    for_each_call(operation, {.call = Call::fstat, .error = EIO}, [&](const Outcome& outcome) {
      failures += outcome.end == End::failed;
      if (outcome.end == End::done) {  // it was a file that is read, whatever its size
        ASSERT_EQ(outcome.result, result);
      } else {
        ASSERT_EQ(outcome.end, End::failed);
      }
    });
    ASSERT_GE(failures, 1) << operation.name;
  }
}

TEST_P(FailingWrites, InterruptedCallsChangeNothing) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    for (const Call call : {Call::open, Call::pwrite, Call::close, Call::ftruncate}) {
      for_each_call(operation, {.call = call, .error = EINTR, .most_bytes = few_written},
                    [&](const Outcome& outcome) {
                      ASSERT_EQ(outcome.end, End::done);
                      ASSERT_EQ(outcome.result, result);
                    });
    }
  }
}

TEST_P(FailingWrites, ShortWritesChangeNothing) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    for (const std::size_t bytes : {std::size_t{1}, std::size_t{7}}) {
      const Outcome outcome = run(operation, {.most_bytes = bytes}).outcome;
      ASSERT_EQ(outcome.end, End::done) << operation.name << ": " << outcome.message;
      ASSERT_EQ(outcome.result, result) << operation.name;
    }
  }
}

TEST_P(FailingWrites, AHostWithoutHandlersEndsWithAMessageAndStatusTwo) {
  // Units that the operation leaves open are closed when the run ends, and fail there.
  units_stay_open = true;
  for (const Operation& operation : GetParam().all()) {
    for (const auto& fault : {std::pair{Call::pwrite, ENOSPC}, {Call::close, EDQUOT}}) {
      const Call call = fault.first;
      const int error = fault.second;
      int failures = 0;
      for (int nth = 1;; ++nth) {
        place_files_and_old_output(operation);
        begin_run();
        const Started started = operation.start();
        const ChildEnd end = run_in_child([&] {
          // Never destroyed, because the run goes on while the process ends.
          static std::vector<const CallWatch*>& kept = *new std::vector<const CallWatch*>;
          kept.push_back(
              new CallWatch({.call = call, .nth = nth, .error = error, .most_bytes = few_written}));
          started.call();
        });
        const bool failed = end.status != 0 || !end.error.empty();
        failures += failed;
        faults_injected += failed;
        if (failed) {
          ASSERT_EQ(end.status, 2) << operation.name << ", " << nth << ": " << end.error;
          const char* const doing = call == Call::close ? "close" : "write";
          ASSERT_EQ(end.error, std::string("mod_p3dgrid: cannot ") + doing + " " +
                                   operation.output + ": " + text_of(error) + "\n");
        }
        const bool after_the_last = call == Call::pwrite ? !failed : nth > most_closes(operation);
        if (after_the_last) break;
      }
      ASSERT_GE(failures, 1) << operation.name << ", " << name_of(call);
    }
  }
}

TEST_P(FailingWrites, FilesThatCannotBeDeletedAreNamed) {
  for (const Operation& operation : GetParam().all()) {
    const std::string result = undisturbed(operation).result;
    for_each_call(operation, {.call = Call::unlink, .error = EACCES}, [&](const Outcome& outcome) {
      ASSERT_EQ(outcome.end, End::failed);
      ASSERT_NE(outcome.message.find(".tmp: " + text_of(EACCES)), std::string::npos);
      ASSERT_EQ(read_file(operation.output), result);
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, FailingWrites, ::testing::ValuesIn(writing_groups()),
                         [](const auto& group) { return group.param.name; });

}  // namespace
}  // namespace faults
