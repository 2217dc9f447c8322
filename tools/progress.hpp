#pragma once

#include <chrono>
#include <cstdint>
#include <mod_p3dgrid/run.hpp>
#include <p3dgrid/form.hpp>
#include <string>

namespace p3dgrid::tool {

/// Announces the values in the file that is written next, from which its size is estimated. The
/// size of text is unknown.
void expect_values(const Coding& coding, std::int64_t reals, std::int64_t integers = 0);

/// Reports how far work on a file is, as the library reports its own.
void show_progress(const mod_p3dgrid::FileProgress& now);

/// Shows on standard error how far reading and writing is, while it lives: after one second, one
/// line that is overwritten several times a second. Shows nothing unless that is a terminal.
class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void update(const mod_p3dgrid::FileProgress& now);

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::string line_for(const mod_p3dgrid::FileProgress& now, double seconds) const;

  Clock::time_point next_line_;  ///< no line is shown before
  std::string path_;             ///< of the file read or written
  bool writing_ = false;
  std::int64_t bytes_ = 0;        ///< at the last update
  std::int64_t first_bytes_ = 0;  ///< at the first update of this file
  Clock::time_point first_update_;
};

}  // namespace p3dgrid::tool
