#pragma once

#include <string>
#include <vector>

namespace interop {

/// What became of a program that was run.
struct Finished {
  int status;          ///< exit status; -1 if a signal ended it or it could not be started
  std::string output;  ///< standard output and standard error
};

/// Runs a program with its arguments, the first of which is its path, and waits for its end.
[[nodiscard]] Finished run_program(const std::vector<std::string>& arguments);

}  // namespace interop
