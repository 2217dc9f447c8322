#pragma once

#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {

/// Halts the run with an empty stop code: the module has found an inconsistency and said so.
[[noreturn]] void stop_run();

/// Ends the run because of an error; `message` says operation, file and reason. Control characters
/// in it are escaped, so that it is one line whatever the name of the file.
[[noreturn]] void fail_run(std::string message);

/// `operation` on `path` failed with the system's error number `error`. Without memory for all of
/// the message it is `operation` alone, a text of at most 15
/// characters, which needs none.
[[noreturn]] void fail_run(const char* operation, const std::string& path, int error);

/// Prints the same failure while the process exits, when there is no handler left to call.
void report_at_exit(const char* operation, const std::string& path, int error);

/// Exit status of fatal errors.
inline constexpr integer status_of_fatal_errors = 2;

/// Says it without needing memory for the text.
inline constexpr const char* out_of_memory_message = "out of memory";

/// Ends the run because memory has run out; called where a `std::bad_alloc` is handled. The host's
/// own goes on as it is.
[[noreturn]] void fail_without_memory(std::string message);

}  // namespace mod_p3dgrid
