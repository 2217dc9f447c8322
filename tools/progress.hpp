#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace p3dgrid::tool {

/// Says how much the file will hold that is written next, for the time left to be known.
void expect_output(std::int64_t bytes);

/// Shows on standard error how far the reading and writing of files is, while it lives: from its
/// second second on, one line that is written over several times a second.
///
/// It asks the system how much the process has read and written and which files it has open; those
/// who do the work know nothing of it.
class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// True when standard error is a terminal, for which alone the line is meant.
  [[nodiscard]] static bool has_reader();

 private:
  using Clock = std::chrono::steady_clock;

  /// Bytes that the process has moved so far.
  struct Counts {
    std::int64_t read = 0;
    std::int64_t written = 0;
  };

  /// An open file.
  struct File {
    std::string name;
    dev_t device = 0;
    ino_t number = 0;
    std::int64_t size = 0;
    bool for_writing = false;
  };

  /// Work on one file in one direction.
  struct Work {
    File file;
    std::int64_t begin = 0;  ///< count when it began
    Clock::time_point since;
  };

  [[nodiscard]] static std::optional<Counts> counts();
  [[nodiscard]] static std::optional<File> open_file(bool for_writing);
  [[nodiscard]] static std::string line_for(const Work& work, std::int64_t done, double seconds);
  void watch();
  [[nodiscard]] std::string look();

  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;
  Counts last_;
  Clock::time_point last_look_;
  std::optional<Work> work_;
  std::thread thread_;
};

}  // namespace p3dgrid::tool
