/// Arrays so large that their lines are moved in tiles, ahead of the place where the file stands.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "faults/attempt.hpp"
#include "faults/system_calls.hpp"
#include "grid/grid_case.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;
using mod_p3dgrid::p3dlastfailure;

constexpr int tile_points = 150'000;
constexpr GridForm form{.iformat = 0, .dblprec = false, .multiblock = false, .iblank = false};

std::string large_grid() {
  Bytes coordinates;
  for (int n = 0; n < 3 * tile_points; ++n) coordinates.r4(static_cast<float>(n) / 7);
  return Bytes().record(Bytes().i4s({tile_points, 1, 1})).record(coordinates).str();
}

class Tiles : public InScratchFolder {
 protected:
  void SetUp() override {
    write_file("grid", bytes);
    ASSERT_EQ(read().end, End::done);
  }

  Outcome read(const CallPlan& plan = {}) {
    grid = std::make_unique<Grid>();
    return read_into_it(plan);
  }
  Outcome read_into_it(const CallPlan& plan) {
    begin_run();
    const CallWatch watch(plan);
    const Outcome outcome =
        finish({[&] { grid->read("grid", form); },
                [&] {
                  return std::string(reinterpret_cast<const char*>(grid->xyz.data()),
                                     static_cast<std::size_t>(grid->xyz.size()) * 4);
                }});
    calls = CallWatch::count(plan.call);
    return outcome;
  }
  /// Overwrites a longer file.
  Outcome write(const CallPlan& plan = {}) {
    write_file("written", std::string(bytes.size() + 1000, '#'));
    return write_over_it(plan);
  }
  Outcome write_new_file(const CallPlan& plan) {
    std::filesystem::remove("written");
    return write_over_it(plan);
  }
  Outcome write_over_it(const CallPlan& plan) {
    begin_run();
    const CallWatch watch(plan);
    const Outcome outcome =
        finish({[&] { grid->write("written", form); }, [] { return read_file("written"); }});
    calls = CallWatch::count(plan.call);
    return outcome;
  }

  const std::string bytes = large_grid();
  std::unique_ptr<Grid> grid;
  int calls = 0;
};

TEST_F(Tiles, EveryFailingReadIsReportedOnceWithItsReason) {
  for (const Call call : {Call::read, Call::pread}) {
    for (int nth = 1;; ++nth) {
      const Outcome outcome = read({.call = call, .nth = nth, .error = EIO});
      if (calls < nth) break;
      ASSERT_EQ(outcome.end, End::reported) << name_of(call) << nth << outcome.message;
      ASSERT_EQ(p3dlastfailure().found, std::generic_category().message(EIO));
    }
  }
  read({.call = Call::pread});
  EXPECT_GT(calls, 0) << "the grid is too small for tiles";
}

TEST_F(Tiles, InterruptedAndShortCallsChangeNothing) {
  const std::string coordinates = read().result;
  for (const Call call : {Call::read, Call::pread}) {
    for (int nth = 1;; ++nth) {
      ASSERT_EQ(read({.call = call, .nth = nth, .error = EINTR}).result, coordinates);
      if (calls < nth) break;
    }
  }
  ASSERT_EQ(read({.most_bytes = 1001}).result, coordinates);
  for (int nth = 1;; ++nth) {
    ASSERT_EQ(write({.call = Call::pwrite, .nth = nth, .error = EINTR}).result, bytes);
    if (calls < nth) break;
  }
  ASSERT_EQ(write({.most_bytes = 1001}).result, bytes);
}

TEST_F(Tiles, EveryFailingWriteIsAnErrorOfTheRun) {
  for (int nth = 1;; ++nth) {
    const Outcome outcome =
        write({.call = Call::pwrite, .nth = nth, .error = ENOSPC, .most_bytes = 50'000});
    if (calls < nth) break;
    ASSERT_EQ(outcome.end, End::failed) << nth;
    ASSERT_EQ(outcome.message, "cannot write written: No space left on device");
    // Nothing of the old file is taken for part of the new one.
    const std::string left = read_file("written");
    ASSERT_LT(left.size(), bytes.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
      ASSERT_TRUE(left[i] == bytes[i] || left[i] == '\0') << "write " << nth << ", byte " << i;
    }
  }
}

/// Bytes that the file takes on the disk.
std::int64_t space_of(const char* name) {
  struct stat status;
  return ::stat(name, &status) == 0 ? status.st_blocks * 512 : -1;
}

TEST_F(Tiles, SystemsThatReserveNoSpaceChangeNothing) {
  ASSERT_EQ(write_new_file({.call = Call::fallocate}).result, bytes);
  ASSERT_GT(calls, 0) << "no space was asked for";
  for (const int error : {EOPNOTSUPP, ENOSPC, EINTR}) {
    const Outcome outcome = write_new_file({.call = Call::fallocate, .nth = 1, .error = error});
    EXPECT_EQ(outcome.result, bytes) << error;
    EXPECT_EQ(outcome.end, End::done) << error;
  }
}

TEST_F(Tiles, FilesThatStayAsLongAreNotGivenSpace) {
  ASSERT_EQ(write({.call = Call::fallocate}).result, bytes);
  EXPECT_EQ(calls, 0);
}

TEST_F(Tiles, AFailedWriteKeepsNoSpace) {
  for (int nth = 1;; ++nth) {
    const Outcome outcome = write_new_file({.call = Call::pwrite, .nth = nth, .error = EIO});
    if (calls < nth) break;
    ASSERT_EQ(outcome.end, End::failed) << nth;
    const auto kept = static_cast<std::int64_t>(read_file("written").size());
    EXPECT_LE(space_of("written"), kept + 64 * 1024) << nth;
  }
}

/// What a file still holds when it has become shorter, every whole value of it.
TEST_F(Tiles, OfAFileThatShrinksAsFarAsItGoes) {
  constexpr std::size_t header = 20 + 4;
  constexpr std::size_t line = tile_points;
  for (const std::size_t values :
       {std::size_t{0}, std::size_t{1000}, line + 1000, 2 * line + 140'000}) {
    for (int nth = 1;; ++nth) {
      write_file("grid", bytes);
      const auto shrink = [&] { std::filesystem::resize_file("grid", header + 4 * values + 3); };
      grid = std::make_unique<Grid>();
      static_cast<void>(grid->xyz.allocate(3, tile_points));
      std::ranges::fill(grid->xyz.span(), -1.F);
      const Outcome outcome = read_into_it({.call = Call::pread, .nth = nth, .before = shrink});
      if (calls < nth) break;
      ASSERT_EQ(outcome.end, End::reported) << values << ", read " << nth;
      ASSERT_EQ(p3dlastfailure().status, -1);
      for (std::size_t n = 0; n < values; ++n) {
        ASSERT_EQ(grid->xyz.data()[n % line * 3 + n / line], static_cast<float>(n) / 7)
            << values << ", read " << nth << ", value " << n;
      }
      // What was read before the file shrank is kept, a buffer of it at least.
      if (nth > 1 || values < 20'000) continue;
      ASSERT_EQ(grid->xyz.data()[values % line * 3 + values / line], -1.F) << values;
    }
    ASSERT_GT(calls, 2);
  }
}

TEST_F(Tiles, CutFilesAreReportedOnce) {
  for (std::size_t length = bytes.size() - 1; length > 5000; length -= 4999) {
    std::filesystem::resize_file("grid", length);
    ASSERT_EQ(read().end, End::reported) << length;
  }
}

}  // namespace
}  // namespace faults
