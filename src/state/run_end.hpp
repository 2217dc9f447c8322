#pragma once

#include <functional>
#include <memory>
#include <string>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {

/// What is done when the run ends. Shared, so that handing it on needs no memory.
using RunEndHandler = std::shared_ptr<const std::function<void(const RunEnd&)>>;

/// Installs a handler; does what `p3dsetrunend` does, without memory.
void set_run_end_handler(RunEndHandler handler) noexcept;

/// Halts the run with an empty stop code: the module has found an inconsistency and said so.
[[noreturn]] void stop_run();

/// Ends the run because of an error; `message` says operation, file and reason. Control characters
/// in it are escaped, so that it is one line whatever the name of the file.
[[noreturn]] void fail_run(std::string message);

/// `operation` on `path` failed with the system's error number `error`. Without memory for all of
/// the message it is `operation` alone, a text of at most 15
/// characters, which needs none.
[[noreturn]] void fail_run(const char* operation, const std::string& path, int error);

/// Says it without needing memory for the text.
inline constexpr const char* out_of_memory_message = "out of memory";

/// Ends the run because memory has run out; called where a `std::bad_alloc` is handled. The host's
/// own goes on as it is.
[[noreturn]] void fail_without_memory(std::string message);

}  // namespace mod_p3dgrid
