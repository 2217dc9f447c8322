#include "state/run_end.hpp"

#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {
namespace {

constexpr integer status_halted = 0;
constexpr integer status_error = 2;

std::function<void(const RunEnd&)>& run_end_handler() {
  // Never destroyed: a run may end while static objects are.
  static auto& handler = *new std::function<void(const RunEnd&)>;
  return handler;
}

[[noreturn]] void end_run(const RunEnd& end) {
  // A copy, because the handler may install another one.
  if (const auto handler = run_end_handler()) handler(end);
  if (!end.message.empty()) std::fprintf(stderr, "mod_p3dgrid: %s\n", end.message.c_str());
  // Units still connected are flushed and closed on the way out, by the unit table.
  std::exit(end.status);
}

}  // namespace

void p3dsetrunend(std::function<void(const RunEnd&)> handler) {
  run_end_handler() = std::move(handler);
}

void stop_run() {
  end_run({status_halted, {}});
}

void fail_run(std::string message) {
  end_run({status_error, std::move(message)});
}

void fail_run(const char* operation, const std::string& path, int error) {
  fail_run(std::string(operation) + " " + path + ": " + std::generic_category().message(error));
}

}  // namespace mod_p3dgrid
