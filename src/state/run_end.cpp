#include "state/run_end.hpp"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>
#include <utility>

#include "state/host.hpp"

namespace mod_p3dgrid {
namespace {

constexpr integer status_halted = 0;
constexpr integer status_error = 2;

RunEndHandler& run_end_handler() {
  // Never destroyed: a run may end while static objects are.
  alignas(RunEndHandler) static std::byte place[sizeof(RunEndHandler)];
  static auto& handler = *new (place) RunEndHandler;
  return handler;
}

[[noreturn]] void end_run(const RunEnd& end) {
  // A copy, because the handler may install another one.
  if (const RunEndHandler handler = run_end_handler()) host::call(*handler, end);
  if (!end.message.empty()) std::fprintf(stderr, "mod_p3dgrid: %s\n", end.message.c_str());
  // Units still connected are flushed and closed on the way out, by the unit table.
  std::exit(end.status);
}

}  // namespace

void p3dsetrunend(std::function<void(const RunEnd&)> handler) {
  set_run_end_handler(handler ? std::make_shared<decltype(handler)>(std::move(handler)) : nullptr);
}

void set_run_end_handler(RunEndHandler handler) noexcept {
  run_end_handler() = std::move(handler);
}

void stop_run() {
  end_run({status_halted, {}});
}

void fail_run(std::string message) {
  try {
    message = p3dprintable(std::move(message));
  } catch (const std::bad_alloc&) {
    message = out_of_memory_message;
  }
  end_run({status_error, std::move(message)});
}

void fail_run(const char* operation, const std::string& path, int error) {
  std::string message;
  try {
    message = std::string(operation) + " " + path + ": " + std::generic_category().message(error);
  } catch (const std::bad_alloc&) {
    message = operation;
  }
  fail_run(std::move(message));
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
