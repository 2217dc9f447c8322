#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "mod_p3dgrid/run.hpp"

/// A host for tests: defines `mod_gridvars`, writes down every call and message, and turns the end
/// of the run into an exception.
namespace test_support {

/// Thrown where the module ends the run.
struct RunEnded : std::runtime_error {
  explicit RunEnded(const mod_p3dgrid::RunEnd& end)
      : std::runtime_error(end.message), status(end.status) {}
  int status;
};

/// Calls as text, in order: `dispreadwrite(1, 10, 200, grid.p3d, 0, F, -, F, T, -, -)`,
/// `checkallocationerror(0)`, `dispfilereaderror()`. Flags are T and F, absent arguments `-`.
extern std::vector<std::string> calls;
/// Message lines, without line ends.
extern std::vector<std::string> messages;
/// Called at the start of `checkallocationerror`, to look at the state of that moment.
extern std::function<void(int)> on_allocation;
/// Called from `dispfilereaderror`.
extern std::function<void()> on_read_error;

/// How many calls into the host are under way. Tests that count or fail what the library asks of
/// the system leave out what is asked meanwhile.
extern int host_at_work;

/// Work of the host's, or of the test in its place.
class HostWork {
 public:
  HostWork() { ++host_at_work; }
  HostWork(const HostWork&) = delete;
  HostWork& operator=(const HostWork&) = delete;
  ~HostWork() { --host_at_work; }
};

[[nodiscard]] int count_calls(const std::string& name);

/// Sets the module, its host and its units to how a run begins.
void begin_run();

}  // namespace test_support
