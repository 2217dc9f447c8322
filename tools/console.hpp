#pragma once

#include <string>
#include <string_view>

namespace p3dgrid::tool {

/// Sets the name with which messages on standard error begin.
void set_program_name(const std::string& name);

/// With `quiet`, notes and what `print_summary` prints are dropped; results and failures are not.
void set_quiet(bool quiet);

/// One line of a command's result, on standard output. Control characters are escaped, here and in
/// all functions except `print_text` and `print_failure`.
void print_line(std::string_view line);

/// Lines of a command's result, on standard output.
void print_text(std::string_view text);

/// From now on only `print_text` prints on standard output.
void keep_output_for_programs();

/// One line that says what has been done, on standard output.
void print_summary(std::string_view line);

/// A warning, on standard error. Repetitions of a warning are not printed.
void print_note(std::string_view text);

/// Why the command failed, on standard error.
void print_failure(std::string_view text);

/// A line on standard error that the next one overwrites, and that is erased before anything else
/// is printed; empty for none.
void show_status(const std::string& line);

/// Flushes standard output. Throws a Failure if any output since the start was lost.
void finish_output();

}  // namespace p3dgrid::tool
