#pragma once

#include <string>
#include <vector>

#include "model/operation.hpp"

namespace model {

/// What an operation tells its host.
struct Outcome {
  int failed_allocations = 0;
  int failed_reads = 0;
  int ended = -1;  ///< status that ended the run, or -1

  [[nodiscard]] bool success() const {
    return failed_allocations == 0 && failed_reads == 0 && ended < 0;
  }
};

/// Has the module do it, on files made for it.
[[nodiscard]] Outcome perform(const Operation& operation);

/// Files of this folder that the process has open, as the system tells, sorted.
[[nodiscard]] std::vector<std::string> open_files();

}  // namespace model
