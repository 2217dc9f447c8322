#pragma once

#include <mod_p3dgrid/run.hpp>
#include <new>
#include <p3dgrid/error.hpp>
#include <stdexcept>
#include <string>

namespace p3dgrid::tool {

enum class ExitStatus {
  done = 0,
  mismatch = 1,  ///< a file is damaged, or is not what was stated
  unusable = 2,  ///< wrong usage, or a file that cannot be opened or written
};

/// Ends the command. `what()` names the file and says what is wrong with it.
class Failure : public std::runtime_error {
 public:
  /// @param message  one line; control characters in it are escaped
  /// @param more     follows it unchanged and may have several lines; contains no file names
  Failure(ExitStatus status, const std::string& message, const std::string& more = {})
      : std::runtime_error(mod_p3dgrid::p3dprintable(message) + more), status_(status) {}

  [[nodiscard]] ExitStatus status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

/// A file is damaged, or is not what was stated.
class Mismatch : public Failure {
 public:
  explicit Mismatch(const std::string& message, const std::string& more = {})
      : Failure(ExitStatus::mismatch, message, more) {}
};

/// The same, but another form of the file may be readable.
class Unreadable : public Mismatch {
  using Mismatch::Mismatch;
};

/// Wrong usage, or a file that cannot be opened or written.
class Unusable : public Failure {
 public:
  explicit Unusable(const std::string& message, const std::string& more = {})
      : Failure(ExitStatus::unusable, message, more) {}
};

/// Runs `action`, and turns an `Error` into a Failure.
template <class Action>
auto with_failures(const Action& action) {
  try {
    return action();
  } catch (const Error& error) {
    const bool unusable = error.kind() == ErrorKind::system ||
                          error.kind() == ErrorKind::argument ||
                          error.kind() == ErrorKind::ambiguous;
    if (unusable) throw Unusable(error.what());
    throw Unreadable(error.what());
  }
}

/// The same, and names the file if there is not enough memory.
template <class Action>
auto with_failures(const std::string& path, const Action& action) {
  try {
    return with_failures(action);
  } catch (const std::bad_alloc&) {
    throw Unusable(path + ": not enough memory for this file");
  }
}

}  // namespace p3dgrid::tool
