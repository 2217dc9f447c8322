#include "console.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <mod_p3dgrid/run.hpp>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "failure.hpp"
#include "gzip.hpp"

namespace p3dgrid::tool {
namespace {

std::string program_name = "p3dgrid";
bool quiet = false;
bool output_kept_for_programs = false;
int first_output_error = 0;

std::string printable(std::string_view text) {
  return with_original_paths(mod_p3dgrid::p3dprintable(std::string(text)));
}

constexpr const char* erase_line = "\r\x1b[K";
bool status_shown = false;

void remember_output_error() {
  if (first_output_error == 0) first_output_error = errno != 0 ? errno : EIO;
}

void write_line(std::FILE* stream, const std::string& line) {
  errno = 0;
  const bool written = std::fwrite(line.data(), 1, line.size(), stream) == line.size();
  if (!written && stream == stdout) remember_output_error();
}

void erase_status() {
  if (!std::exchange(status_shown, false)) return;
  write_line(stderr, erase_line);
}

void flush_output() {
  errno = 0;
  if (std::fflush(stdout) != 0) remember_output_error();
}

// Standard output is flushed first, so that both streams keep their order in a shared log.
void print_error_line(std::string_view prefix, std::string_view text) {
  erase_status();
  flush_output();
  write_line(stderr, std::string(prefix).append(text).append("\n"));
}

}  // namespace

void set_program_name(const std::string& name) {
  program_name = name;
}

void set_quiet(bool be_quiet) {
  quiet = be_quiet;
}

void print_line(std::string_view line) {
  if (!output_kept_for_programs) print_text(printable(line));
}

void print_text(std::string_view text) {
  erase_status();
  write_line(stdout, std::string(text).append("\n"));
}

void keep_output_for_programs() {
  output_kept_for_programs = true;
}

void print_summary(std::string_view line) {
  if (!quiet) print_line(line);
}

void print_note(std::string_view text) {
  static std::set<std::string, std::less<>> printed;
  if (quiet || !printed.emplace(text).second) return;
  print_error_line(program_name + ": note: ", printable(text));
}

void print_failure(std::string_view text) {
  print_error_line(program_name + ": ", with_original_paths(text));
}

void show_status(const std::string& line) {
  flush_output();
  erase_status();
  if (line.empty()) return;
  constexpr std::size_t usual_columns = 80;
  struct winsize size {};
  const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  // A line that wraps could not be overwritten.
  write_line(stderr, printable(line).substr(0, (known ? size.ws_col : usual_columns) - 1));
  status_shown = true;
}

void finish_output() {
  flush_output();
  if (first_output_error == 0) return;
  throw Unusable("standard output: " + std::generic_category().message(first_output_error));
}

}  // namespace p3dgrid::tool
