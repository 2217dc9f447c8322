#include "state/run_end.hpp"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>
#include <utility>

#include "recordio/handler.hpp"
#include "state/host.hpp"

namespace mod_p3dgrid {
namespace {

constexpr integer status_halted = 0;

constinit Handler<void(const RunEnd&)> run_end_handler;

void print(const std::string& message) {
  std::fprintf(stderr, "mod_p3dgrid: %s\n", message.c_str());
}

std::string escaped_line(std::string message) try {
  return p3dprintable(std::move(message));
} catch (const std::bad_alloc&) {
  return out_of_memory_message;
}

[[noreturn]] void end_run(const RunEnd& end) {
  if (run_end_handler) host::call(run_end_handler, end);
  if (!end.message.empty()) print(end.message);
  // `close_at_exit` of the table of units flushes and closes open units.
  std::exit(end.status);
}

}  // namespace

void p3dsetrunend(std::function<void(const RunEnd&)> handler) {
  run_end_handler.set(std::move(handler));
}

void stop_run() {
  end_run({status_halted, {}});
}

void fail_run(std::string message) {
  end_run({status_of_fatal_errors, escaped_line(std::move(message))});
}

void report_at_exit(std::string message) {
  print(escaped_line(std::move(message)));
}

std::string message_of(const char* operation, const std::string& path, int error) try {
  return std::string(operation) + " " + path + ": " + std::generic_category().message(error);
} catch (const std::bad_alloc&) {
  return operation;
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
