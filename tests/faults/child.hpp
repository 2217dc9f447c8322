#pragma once

#include <functional>
#include <string>

namespace faults {

/// How a process has ended.
struct ChildEnd {
  int status = 0;     ///< exit status; 128 and the signal for one that a signal has ended
  std::string error;  ///< its standard error
};

/// Runs the body in a process of its own, as a host without any handlers, and then ends it.
[[nodiscard]] ChildEnd run_in_child(const std::function<void()>& body);

}  // namespace faults
