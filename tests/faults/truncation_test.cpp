/// Every file that an operation reads, cut at every byte.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "faults/attempt.hpp"
#include "faults/memory.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;

/// What an operation may ask for beyond what it asks for when all goes well: the texts of a
/// failure.
constexpr std::int64_t bytes_of_a_report = 4096;

std::ptrdiff_t words_in(const std::string& text) {
  std::istringstream stream(text);
  return std::distance(std::istream_iterator<std::string>(stream), {});
}

/// What has to come of a file of which `length` bytes are left.
enum class Expected { done, reported, either };

Expected expected_for(const Operation& operation, std::size_t length) {
  if (length >= operation.needed) return Expected::done;
  if (operation.iformat != formatted || operation.deletes_input) return Expected::reported;
  // In text only the number of values tells; the last may have lost digits and be a number still.
  const std::string& whole = operation.files.at(operation.input);
  const std::string left = whole.substr(0, length);
  const std::string needed = whole.substr(0, operation.needed);
  if (words_in(left) < words_in(needed)) return Expected::reported;
  const bool word_is_whole = std::isspace(static_cast<unsigned char>(whole[length])) != 0;
  return word_is_whole ? Expected::done : Expected::either;
}

class Truncation : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  /// Cuts the file shorter and shorter.
  void cut_at_every_byte(const Operation& operation) {
    place_files(operation);
    std::int64_t bytes_justified = 0;
    std::string result;
    for (std::size_t length = operation.files.at(operation.input).size() + 1; length-- > 0;) {
      if (operation.deletes_input) place_files(operation);
      std::filesystem::resize_file(operation.input, length);
      begin_run();
      const Started started = operation.start();
      Outcome outcome;
      std::int64_t bytes = 0;
      {
        const Watch memory;
        outcome = finish(started);
        bytes = Watch::bytes();
      }
      if (result.empty()) {
        ASSERT_EQ(outcome.end, End::done) << operation.name << ": " << outcome.message;
        bytes_justified = bytes;
        result = outcome.result;
      }
      check(operation, length, outcome, result);
      if (HasFatalFailure()) return;
      ASSERT_LE(bytes, bytes_justified + bytes_of_a_report)
          << operation.name << ", " << length << " bytes";
      ++inputs;
    }
  }

  static void check(const Operation& operation, std::size_t length, const Outcome& outcome,
                    const std::string& result) {
    const Expected expected = expected_for(operation, length);
    const bool done = outcome.end == End::done;
    const bool reported = outcome.end == End::reported;
    ASSERT_TRUE((done && expected != Expected::reported) ||
                (reported && expected != Expected::done))
        << operation.name << ", " << length << " of " << operation.needed
        << " bytes needed: " << outcome.message;
    if (expected == Expected::done) {
      ASSERT_EQ(outcome.result, result) << operation.name << ", " << length << " bytes";
    }
    if (reported) {
      ASSERT_NE(outcome.message.find(operation.input + ": "), std::string::npos) << outcome.message;
      ASSERT_EQ(exists(operation.input), !operation.deletes_input);
    }
  }

  int inputs = 0;
};

TEST_P(Truncation, IsReportedOnceWhereverItIs) {
  for (const Operation& operation : GetParam().all()) {
    cut_at_every_byte(operation);
    if (HasFatalFailure()) return;
  }
  std::printf("%s: %d truncated files\n", GetParam().name, inputs);
}

INSTANTIATE_TEST_SUITE_P(All, Truncation, ::testing::ValuesIn(reading_groups()),
                         [](const auto& group) { return group.param.name; });

}  // namespace
}  // namespace faults
