#pragma once

#include <functional>
#include <mod_p3dgrid/run.hpp>
#include <new>
#include <optional>
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
    throw Mismatch(error.what());
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

/// Runs a step and returns its failure; none if it succeeds.
[[nodiscard]] std::optional<Failure> failure_of(const std::function<void()>& step);

/// Runs a step, prints its failure, and returns the exit status.
[[nodiscard]] ExitStatus attempt(const std::function<void()>& step);

/// Turns a closed pipe and a file-size limit into write errors instead of signals, and occupies the
/// descriptors of closed standard streams, so that no opened file gets one.
void prepare_process();

}  // namespace p3dgrid::tool
