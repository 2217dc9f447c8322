/// Devices, pipes and disks that the system itself lets fail.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "faults/attempt.hpp"
#include "faults/child.hpp"
#include "faults/system_calls.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace faults {
namespace {

using namespace test_support;

class PipesAndDisks : public InScratchFolder, public ::testing::WithParamInterface<OperationGroup> {
 protected:
  PipesAndDisks() {
    units_stay_open = false;
    std::signal(SIGPIPE, SIG_IGN);
  }

  [[nodiscard]] static bool makes_new_names() { return GetParam().all == variable_writes; }

  /// Puts a pipe in the place of a file.
  static void make_pipe(const std::string& name) {
    std::filesystem::remove(name);
    ASSERT_EQ(::mkfifo(name.c_str(), 0666), 0);
  }
};

using Inputs = PipesAndDisks;

/// Reads the first `length` bytes of the input from a pipe that closes behind them.
Outcome read_from_pipe(const Operation& operation, std::size_t length) {
  begin_run();
  const Started started = operation.start();
  // The pipe holds all of a small file, so that nobody has to feed it meanwhile.
  const int writer = ::open(operation.input.c_str(), O_RDWR);
  const std::string& bytes = operation.files.at(operation.input);
  EXPECT_EQ(::write(writer, bytes.data(), length), static_cast<ssize_t>(length));
  const CallWatch watch({.call = Call::read, .nth = 1, .before = [&] { ::close(writer); }});
  const Outcome outcome = finish(started);
  if (CallWatch::count(Call::read) == 0) ::close(writer);
  return outcome;
}

TEST_P(Inputs, PipesAreReadLikeFiles) {
  for (const Operation& operation : GetParam().all()) {
    place_files(operation);
    const Outcome from_file = attempt(operation);
    make_pipe(operation.input);
    const std::size_t whole = operation.files.at(operation.input).size();
    const Outcome from_pipe = read_from_pipe(operation, whole);
    ASSERT_EQ(from_pipe.end, End::done) << operation.name << ": " << from_pipe.message;
    ASSERT_EQ(from_pipe.result, from_file.result) << operation.name;
    for (const std::size_t length : {std::size_t{0}, operation.needed / 2}) {
      const Outcome cut = read_from_pipe(operation, length);
      ASSERT_EQ(cut.end, operation.needed == 0 ? End::done : End::reported)
          << operation.name << ": " << cut.message;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, Inputs,
                         ::testing::Values(OperationGroup{"readp3dgrid", grid_reads},
                                           OperationGroup{"readp3dgridheader", grid_header_reads},
                                           OperationGroup{"readp3drestart", restart_reads},
                                           OperationGroup{"readnextp3dvar", variable_reads}),
                         [](const auto& group) { return group.param.name; });

class Outputs : public PipesAndDisks {};

TEST_P(Outputs, AFullDeviceIsAnErrorOfTheRun) {
  if (makes_new_names()) GTEST_SKIP() << "writes no file that exists";
  for (const Operation& operation : GetParam().all()) {
    place_files(operation);
    begin_run();
    const Started started = operation.start();
    mod_p3dgrid::p3dsetpaths([&](std::string_view name) {
      return name == operation.output ? "/dev/full" : std::string(name);
    });
    const Outcome outcome = finish(started);
    ASSERT_EQ(outcome.end, End::failed) << operation.name << ": " << outcome.message;
    ASSERT_EQ(outcome.message, "cannot write /dev/full: No space left on device");
  }
}

TEST_P(Outputs, APipeWhoseReaderGoesAwayIsAnErrorOfTheRun) {
  if (makes_new_names()) GTEST_SKIP() << "writes no file that exists";
  for (const Operation& operation : GetParam().all()) {
    place_files(operation);
    begin_run();
    const Started started = operation.start();
    make_pipe(operation.output);
    const int reader = ::open(operation.output.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const CallWatch watch({.call = Call::write, .nth = 1, .before = [&] { ::close(reader); }});
    const Outcome outcome = finish({started.call, [] { return std::string(); }});
    ASSERT_EQ(outcome.end, End::failed) << operation.name << ": " << outcome.message;
    ASSERT_EQ(outcome.message, "cannot write " + operation.output + ": Broken pipe");
  }
}

TEST_P(Outputs, PipesAreWrittenLikeFiles) {
  if (makes_new_names()) GTEST_SKIP() << "writes no file that exists";
  for (const Operation& operation : GetParam().all()) {
    place_files(operation);
    const std::string result = attempt(operation).result;
    place_files(operation);
    begin_run();
    const Started started = operation.start();
    make_pipe(operation.output);
    const int reader = ::open(operation.output.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const Outcome outcome = finish({started.call, [] { return std::string(); }});
    std::array<char, 16384> bytes{};
    const ssize_t got = ::read(reader, bytes.data(), bytes.size());
    ::close(reader);
    ASSERT_EQ(outcome.end, End::done) << operation.name << ": " << outcome.message;
    ASSERT_EQ(std::string(bytes.data(), static_cast<std::size_t>(got)), result);
  }
}

/// Fills the disk to the last byte.
void fill_disk(const std::string& name) {
  std::ofstream file(name);
  while (file.put('x').flush()) {
  }
}

TEST_P(Outputs, ADiskThatIsFullEndsTheRun) {
  // Some hosts let nobody mount; that shows in a status of its own.
  constexpr int no_mount = 77;
  for (const Operation& operation : GetParam().all()) {
    place_files(operation);
    begin_run();
    const Started started = operation.start();
    std::filesystem::create_directory("disk");
    const ChildEnd end = run_in_child([&] {
      if (::unshare(CLONE_NEWNS) != 0 ||
          ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
          ::mount("none", "disk", "tmpfs", 0, "size=4096") != 0) {
        ::_exit(no_mount);
      }
      fill_disk("disk/filler");
      mod_p3dgrid::p3dsetpaths([&](std::string_view name) {
        const bool written = name == operation.output;
        return (written ? "disk/" : "") + std::string(name);
      });
      started.call();
    });
    if (end.status == no_mount) GTEST_SKIP() << "no file system can be mounted here";
    ASSERT_EQ(end.status, 2) << operation.name << ": " << end.error;
    ASSERT_EQ(end.error,
              "mod_p3dgrid: cannot write disk/" + operation.output + ": No space left on device\n");
  }
}

INSTANTIATE_TEST_SUITE_P(All, Outputs, ::testing::ValuesIn(writing_groups()),
                         [](const auto& group) { return group.param.name; });

}  // namespace
}  // namespace faults
