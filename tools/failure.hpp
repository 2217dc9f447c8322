#pragma once

#include <MOD_P3DReader.hpp>
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
  /// @param message  one line: control characters in it, as names of files have them, are escaped
  /// @param more     follows it as it stands, and may be lines; no names of files in here
  Failure(ExitStatus status, const std::string& message, const std::string& more = {})
      : std::runtime_error(mod_p3dgrid::p3dprintable(message) + more), status_(status) {}

  [[nodiscard]] ExitStatus status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

/// What a file holds is not what was asked for; another form of it may be.
class Unreadable : public Failure {
 public:
  explicit Unreadable(const std::string& message, const std::string& more = {})
      : Failure(ExitStatus::mismatch, message, more) {}
};

/// The library has halted the run, for a reason that it has given among its messages.
class Halt : public Failure {
 public:
  Halt() : Failure(ExitStatus::mismatch, "the library has halted; --verbose shows its reason") {}
};

}  // namespace p3dgrid::tool
