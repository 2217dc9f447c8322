#pragma once

#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {

/// Halts the run with status 0, after the reason has been printed.
[[noreturn]] void stop_run();

/// Fatal error. `message` is the operation, the file and the reason; its control characters are
/// escaped.
[[noreturn]] void fail_run(std::string message);

/// Prints the message of a failure while the process exits, without calling the handler.
void report_at_exit(std::string message);

/// The message that `operation` on `path` failed with the system's error number `error`. Without
/// memory for it, `operation`, which has at most 15 characters and so needs no memory.
[[nodiscard]] std::string message_of(const char* operation, const std::string& path, int error);

inline constexpr integer status_of_fatal_errors = 2;

/// Short enough to need no memory as a string.
inline constexpr const char* out_of_memory_message = "out of memory";

/// Fatal error for lack of memory, called in handlers of `std::bad_alloc`. Rethrows the exception
/// if it was thrown by the host.
[[noreturn]] void fail_without_memory(std::string message);

}  // namespace mod_p3dgrid
