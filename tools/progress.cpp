#include "progress.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "console.hpp"
#include "output_file.hpp"

namespace p3dgrid::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 1s;
constexpr auto interval = 200ms;
constexpr double least_seconds = 0.5;  // for a rate that says something

std::atomic<std::int64_t> expected_output = 0;

/// "1.25 GB", in powers of ten.
std::string bytes_text(double bytes) {
  constexpr std::array units = {"B", "kB", "MB", "GB", "TB", "PB"};
  std::size_t unit = 0;
  for (; bytes >= 999.5 && unit + 1 < units.size(); ++unit) bytes /= 1000;
  char text[32];
  std::snprintf(text, sizeof text, "%.*f %s", bytes < 9.995 && unit > 0 ? 2 : 0, bytes,
                units[unit]);
  return text;
}

std::string time_text(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  if (whole < 60) return std::to_string(whole) + " s";
  char text[32];
  if (whole < 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld min", whole / 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld h", whole / 3600, whole / 60 % 60);
  }
  return text;
}

}  // namespace

void expect_output(std::int64_t bytes) {
  expected_output = bytes;
}

// The thread gets no signals: whoever holds them back in the program means all of it.
Progress::Progress() : last_(counts().value_or(Counts{})), last_look_(Clock::now()) {
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_BLOCK, &all, &before);
  thread_ = std::thread([this] { watch(); });
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Progress::~Progress() {
  {
    const std::lock_guard lock(mutex_);
    end_ = true;
  }
  ended_.notify_one();
  thread_.join();
  show_status("");
}

bool Progress::has_reader() {
  return ::isatty(STDERR_FILENO) == 1;
}

void Progress::watch() {
  std::unique_lock lock(mutex_);
  const auto ended = [this] { return end_; };
  const auto begin = Clock::now();
  while (!ended_.wait_for(lock, interval, ended)) {
    const std::string line = look();
    if (Clock::now() - begin >= patience) show_status(line);
  }
}

std::optional<Progress::Counts> Progress::counts() {
  std::ifstream file("/proc/self/io");
  Counts counts;
  std::string word;
  if (file >> word >> counts.read >> word >> counts.written) return counts;
  return std::nullopt;
}

/// A regular file that is open for reading, or for writing. The streams of the process do not
/// count.
std::optional<Progress::File> Progress::open_file(bool for_writing) {
  std::optional<File> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const int descriptor = std::atoi(entry.path().filename().c_str());
    struct stat status;
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (descriptor <= STDERR_FILENO || flags < 0 || ::fstat(descriptor, &status) != 0) continue;
    if (!S_ISREG(status.st_mode) || status.st_dev == 0) continue;
    if (((flags & O_ACCMODE) != O_RDONLY) != for_writing) continue;
    const auto target = std::filesystem::read_symlink(entry.path(), error);
    if (error || target.string().starts_with("/proc/")) continue;
    found =
        File{target.filename().string(), status.st_dev, status.st_ino, status.st_size, for_writing};
  }
  return found;
}

std::string Progress::line_for(const Work& work, std::int64_t done, double seconds) {
  // Made-up names say nothing.
  const bool temporary = work.file.name.starts_with(temporary_prefix);
  std::string line = work.file.for_writing ? "writing" : "reading";
  if (!temporary) line += " " + work.file.name;
  line += ": " + bytes_text(static_cast<double>(done));
  const std::int64_t size = work.file.for_writing ? expected_output.load() : work.file.size;
  const bool bounded = size > 0 && done <= size;
  if (bounded) {
    line += " of " + bytes_text(static_cast<double>(size)) + " (" +
            std::to_string(100 * done / size) + "%)";
  }
  if (seconds < least_seconds) return line;
  const double rate = static_cast<double>(done) / seconds;
  line += ", " + bytes_text(rate) + "/s";
  if (bounded && rate > 0) {
    line += ", " + time_text(static_cast<double>(size - done) / rate) + " left";
  }
  return line;
}

/// What the process is at, by what it has moved since the last look.
std::string Progress::look() {
  const auto now = Clock::now();
  const auto current = counts();
  if (!current) return "";
  const Counts before = std::exchange(last_, *current);
  const auto before_time = std::exchange(last_look_, now);
  const bool writes = current->written - before.written > current->read - before.read;
  const auto file = open_file(writes);
  if (!file) return "";
  const std::int64_t count = writes ? current->written : current->read;
  const bool same = work_ && work_->file.for_writing == writes &&
                    work_->file.device == file->device && work_->file.number == file->number;
  if (!same) work_ = Work{*file, writes ? before.written : before.read, before_time};
  work_->file.size = file->size;
  // Files may be gone through several times.
  if (!writes && file->size > 0 && count - work_->begin > file->size) {
    work_->begin += (count - work_->begin) / file->size * file->size;
    work_->since = before_time;
  }
  return line_for(*work_, count - work_->begin,
                  std::chrono::duration<double>(now - work_->since).count());
}

}  // namespace p3dgrid::tool
