#include "state/run_end.hpp"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "state/host.hpp"

namespace mod_p3dgrid {
namespace {

constexpr integer status_halted = 0;

/// Shared, so that a copy needs no memory.
using RunEndHandler = std::shared_ptr<const std::function<void(const RunEnd&)>>;

RunEndHandler& run_end_handler() {
  // Never destroyed: a run may end while static objects are.
  alignas(RunEndHandler) static std::byte place[sizeof(RunEndHandler)];
  static auto& handler = *new (place) RunEndHandler;
  return handler;
}

void print(const std::string& message) {
  std::fprintf(stderr, "mod_p3dgrid: %s\n", message.c_str());
}

std::string escaped_line(std::string message) {
  try {
    return p3dprintable(std::move(message));
  } catch (const std::bad_alloc&) {
    return out_of_memory_message;
  }
}

std::string message_of(const char* operation, const std::string& path, int error) {
  try {
    return std::string(operation) + " " + path + ": " + std::generic_category().message(error);
  } catch (const std::bad_alloc&) {
    return operation;
  }
}

[[noreturn]] void end_run(const RunEnd& end) {
  // A copy, because the handler may install another one.
  if (const RunEndHandler handler = run_end_handler()) host::call(*handler, end);
  if (!end.message.empty()) print(end.message);
  // `close_at_exit` of the table of units flushes and closes open units.
  std::exit(end.status);
}

}  // namespace

void p3dsetrunend(std::function<void(const RunEnd&)> handler) {
  run_end_handler() = handler ? std::make_shared<decltype(handler)>(std::move(handler)) : nullptr;
}

void stop_run() {
  end_run({status_halted, {}});
}

void fail_run(std::string message) {
  end_run({status_of_fatal_errors, escaped_line(std::move(message))});
}

void fail_run(const char* operation, const std::string& path, int error) {
  fail_run(message_of(operation, path, error));
}

void report_at_exit(const char* operation, const std::string& path, int error) {
  print(escaped_line(message_of(operation, path, error)));
}

void fail_without_memory(std::string message) {
  host::pass_on_bad_alloc();
  try {
    fail_run(std::move(message));
  } catch (const std::bad_alloc&) {
    host::threw_bad_alloc = false;
    throw;
  }
}

}  // namespace mod_p3dgrid
