#include "console.hpp"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "failure.hpp"

namespace p3dgrid {
namespace {

bool quiet_wanted = false;
int first_output_error = 0;

void remember_output_error() {
  if (first_output_error == 0) first_output_error = errno != 0 ? errno : EIO;
}

void write_line(std::FILE* stream, const std::string& line) {
  errno = 0;
  const bool written = std::fwrite(line.data(), 1, line.size(), stream) == line.size();
  if (!written && stream == stdout) remember_output_error();
}

void flush_output() {
  errno = 0;
  if (std::fflush(stdout) != 0) remember_output_error();
}

// Standard output is emptied first, so that in a shared log both streams keep their order.
void print_error_line(std::string_view prefix, std::string_view text) {
  flush_output();
  write_line(stderr, std::string(prefix).append(text).append("\n"));
}

}  // namespace

void set_quiet(bool quiet) {
  quiet_wanted = quiet;
}

void print_line(std::string_view line) {
  write_line(stdout, std::string(line).append("\n"));
}

void print_progress(std::string_view line) {
  if (!quiet_wanted) print_line(line);
}

void print_note(std::string_view text) {
  if (!quiet_wanted) print_error_line("p3dgrid: note: ", text);
}

void print_failure(std::string_view text) {
  print_error_line("p3dgrid: ", text);
}

void finish_output() {
  flush_output();
  if (first_output_error == 0) return;
  throw Failure(ExitStatus::unusable,
                "standard output: " + std::generic_category().message(first_output_error));
}

}  // namespace p3dgrid
