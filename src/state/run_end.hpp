#pragma once

#include <string>

namespace mod_p3dgrid {

/// Halts the run with an empty stop code: the module has found an inconsistency and said so.
[[noreturn]] void stop_run();

/// Ends the run because of an error; `message` says operation, file and reason on one line.
[[noreturn]] void fail_run(std::string message);

/// `operation` on `path` failed with the system's error number `error`.
[[noreturn]] void fail_run(const char* operation, const std::string& path, int error);

}  // namespace mod_p3dgrid
