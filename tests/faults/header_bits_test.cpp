/// Every bit of headers and of record markers, flipped.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>

#include "faults/attempt.hpp"
#include "faults/memory.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;

/// A header may ask for arrays of 1 GiB in files that are far shorter, and each point has places in
/// more arrays than one. Files of some hundred bytes never ask for more than this.
constexpr std::int64_t most_file_bytes = 1'900'000'000;

constexpr int bits_per_byte = 8;

/// Where the length markers of an unformatted file stand.
std::set<std::size_t> marker_bytes(const std::string& file) {
  std::set<std::size_t> all;
  for (std::size_t at = 0; at < file.size();) {
    std::int32_t length = 0;
    std::memcpy(&length, file.data() + at, sizeof length);
    const std::size_t behind = at + sizeof length + static_cast<std::size_t>(length);
    for (std::size_t byte = 0; byte < sizeof length; ++byte) {
      all.insert(at + byte);
      all.insert(behind + byte);
    }
    at = behind + sizeof length;
  }
  return all;
}

class HeaderBits : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  void flip_every_bit(const Operation& operation) {
    const std::string& whole = operation.files.at(operation.input);
    std::set<std::size_t> markers;
    if (operation.iformat == 0) markers = marker_bytes(whole);
    place_files(operation);
    const Outcome undamaged = attempt(operation);
    ASSERT_EQ(undamaged.end, End::done) << operation.name << ": " << undamaged.message;
    for (std::size_t byte = 0; byte < operation.needed; ++byte) {
      if (byte >= operation.header && !markers.contains(byte)) continue;
      for (int bit = 0; bit < bits_per_byte; ++bit) {
        flip(operation, byte, bit);
        const Outcome outcome = watched_attempt(operation);
        check(operation, byte, bit, outcome, undamaged, markers.contains(byte));
        if (HasFatalFailure()) return;
      }
      if (!operation.deletes_input) overwrite(operation.input, byte, whole[byte]);
    }
  }

  /// Overwrites in place.
  static void overwrite(const std::string& name, std::size_t byte, char value) {
    std::fstream file(name, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(byte));
    ASSERT_TRUE(file.put(value));
  }

  static void flip(const Operation& operation, std::size_t byte, int bit) {
    if (operation.deletes_input) place_files(operation);
    const char value = operation.files.at(operation.input)[byte];
    overwrite(operation.input, byte, static_cast<char>(value ^ (1 << bit)));
  }

  Outcome watched_attempt(const Operation& operation) {
    begin_run();
    const Started started = operation.start();
    const Watch memory;
    Outcome outcome = finish(started);
    largest = std::max(largest, Watch::bytes());
    return outcome;
  }

  void check(const Operation& operation, std::size_t byte, int bit, const Outcome& outcome,
             const Outcome& undamaged, bool marker) {
    const auto where = [&] {
      return operation.name + ", byte " + std::to_string(byte) + ", bit " + std::to_string(bit) +
             ": " + outcome.message;
    };
    ASSERT_NE(outcome.end, End::out_of_hand) << where();
    ASSERT_LT(largest, most_file_bytes) << where();
    // Allocations beyond 1 GiB are refused here. The module must not get so far.
    ASSERT_EQ(outcome.refused_allocations, 0) << where();
    // A length that differs from the other one of its record cannot pass.
    if (marker) {
      ASSERT_EQ(outcome.end, End::reported) << where();
    }
    if (outcome.end == End::halted) {
      ASSERT_EQ(outcome.message, "   --- CODE HALTED ---") << where();
    }
    if (outcome.end == End::done && operation.may_read_as) {
      ASSERT_TRUE(operation.may_read_as(outcome.result, undamaged.result)) << where();
    }
    const bool as_before = outcome.end == End::done && outcome.result == undamaged.result;
    ++inputs;
    ++ends[as_before                      ? "read as before"
           : outcome.end == End::done     ? "read as another header says"
           : outcome.end == End::reported ? "reported"
           : outcome.end == End::failed   ? "fatal errors"
                                          : "halted"];
  }

  int inputs = 0;
  std::int64_t largest = 0;
  std::map<std::string, int> ends;
};

TEST_P(HeaderBits, EndInAReadOrInOneReport) {
  for (const Operation& operation : GetParam().all()) {
    flip_every_bit(operation);
    if (HasFatalFailure()) return;
  }
  std::printf("%s: %d flipped bits", GetParam().name, inputs);
  for (const auto& [end, count] : ends) std::printf(", %s %d", end.c_str(), count);
  std::printf("; at most %lld bytes asked for\n", static_cast<long long>(largest));
}

INSTANTIATE_TEST_SUITE_P(All, HeaderBits, ::testing::ValuesIn(reading_groups()),
                         [](const auto& group) { return group.param.name; });

}  // namespace
}  // namespace faults
