#include "progress.hpp"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "console.hpp"
#include "gzip.hpp"
#include "output_file.hpp"

namespace p3dgrid::tool {
namespace {

using namespace std::chrono_literals;
using mod_p3dgrid::FileProgress;

constexpr auto delay = 1s;
constexpr auto interval = 200ms;
constexpr double least_seconds = 0.5;  // shorter times give no meaningful rate

std::int64_t expected_output = 0;
Progress* shown = nullptr;

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
  const bool hours = whole >= 3600;
  const long long units = hours ? whole / 60 : whole;
  char text[32];
  std::snprintf(text, sizeof text, "%lld:%02lld %s", units / 60, units % 60, hours ? "h" : "min");
  return text;
}

}  // namespace

void expect_values(const Coding& coding, std::int64_t reals, std::int64_t integers) {
  expected_output = is_text(coding) ? 0 : reals * real_bytes(coding) + 4 * integers;
}

void show_progress(const FileProgress& now) {
  if (shown != nullptr) shown->update(now);
}

Progress::Progress() : next_line_(Clock::now() + delay) {
  if (::isatty(STDERR_FILENO) != 1) return;
  shown = this;
  mod_p3dgrid::p3dsetprogress(show_progress);
}

Progress::~Progress() {
  mod_p3dgrid::p3dsetprogress({});
  shown = nullptr;
  show_status("");
}

void Progress::update(const FileProgress& now) {
  const auto time = Clock::now();
  // A file may be read several times.
  if (now.path != path_ || now.writing != writing_ || now.bytes < bytes_) {
    path_ = now.path;
    writing_ = now.writing;
    first_bytes_ = now.bytes;
    first_update_ = time;
  }
  bytes_ = now.bytes;
  if (now.bytes == now.size) return show_status("");
  if (time < next_line_) return;
  next_line_ = time + interval;
  show_status(line_for(now, std::chrono::duration<double>(time - first_update_).count()));
}

std::string Progress::line_for(const FileProgress& now, double seconds) const {
  const std::string name = std::filesystem::path(original_path(now.path)).filename().string();
  std::string line = now.writing ? "writing" : "reading";
  if (!name.starts_with(temporary_prefix)) line += " " + name;
  line += ": " + bytes_text(static_cast<double>(now.bytes));
  const std::int64_t size = now.writing ? expected_output : now.size;
  const bool bounded = size > 0 && now.bytes <= size;
  if (bounded) {
    line += " of " + bytes_text(static_cast<double>(size)) + " (" +
            std::to_string(100 * now.bytes / size) + "%)";
  }
  if (seconds < least_seconds) return line;
  const double rate = static_cast<double>(now.bytes - first_bytes_) / seconds;
  line += ", " + bytes_text(rate) + "/s";
  if (bounded && rate > 0) {
    line += ", " + time_text(static_cast<double>(size - now.bytes) / rate) + " left";
  }
  return line;
}

}  // namespace p3dgrid::tool
