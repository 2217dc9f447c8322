#pragma once

#include <string>
#include <string_view>

namespace p3dgrid::tool {

/// With `quiet`, notes and what `print_summary` prints are dropped; results and failures are not.
void set_quiet(bool quiet);

/// Without `verbose`, the library's lines are dropped.
void set_verbose(bool verbose);

/// One line of a command's result, on standard output. Control characters, as names of files have
/// them, are escaped in this and all other lines but those of `print_text` and `print_failure`.
void print_line(std::string_view line);

/// Lines of a command's result, as they stand, on standard output.
void print_text(std::string_view text);

/// The same, dropped where standard output is kept for programs.
void print_result(std::string_view line);

/// Keeps standard output for programs: only what `print_line` and `print_text` print goes there.
void keep_output_for_programs();

/// One line that says what has been done, on standard output.
void print_summary(std::string_view line);

/// One of the library's own lines, on standard output.
void print_library_line(std::string_view line);

/// Something the user should know although the command succeeds, on standard error.
void print_note(std::string_view text);

/// Why the command failed, as it stands, on standard error.
void print_failure(std::string_view text);

/// A line on standard error that is written over by the next one, and gone before anything else is
/// printed; empty for none.
void show_status(const std::string& line);

/// Writes out what standard output still holds. Throws a Failure if any of it was lost since the
/// start, so that a full disk or a closed pipe does not look like success.
void finish_output();

}  // namespace p3dgrid::tool
