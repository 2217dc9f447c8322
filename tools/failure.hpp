#pragma once

#include <stdexcept>
#include <string>

namespace p3dgrid::tool {

/// What the process tells its caller.
enum class ExitStatus {
  done = 0,
  mismatch = 1,  ///< a file is damaged, or is not what it was said to be
  unusable = 2,  ///< wrong usage, or a file that cannot be opened or written
};

/// Ends the command: `what()` names the file and says what is wrong with it.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  [[nodiscard]] ExitStatus status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

/// What a file holds is not what was asked for; another form of it may be.
class Unreadable : public Failure {
 public:
  explicit Unreadable(const std::string& message) : Failure(ExitStatus::mismatch, message) {}
};

/// The library has halted the run, for a reason that it has given among its messages.
class Halt : public Failure {
 public:
  Halt() : Failure(ExitStatus::mismatch, "the library has halted; --verbose shows its reason") {}
};

}  // namespace p3dgrid::tool
