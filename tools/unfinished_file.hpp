#pragma once

#include <csignal>
#include <cstddef>
#include <string>

namespace p3dgrid::tool {

/// A file that does not outlive the work on it: it is removed when this object goes, and also when
/// a signal (HUP, INT, TERM) ends the process before that. The file need not exist.
class UnfinishedFile {
 public:
  /// Takes charge of the file. Throws a Failure when more files are unfinished than the signal
  /// handler has places for.
  explicit UnfinishedFile(std::string path);
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  ~UnfinishedFile();

  [[nodiscard]] const std::string& path() const { return path_; }

  /// Leaves alone from here on whatever has the path.
  void release();

 private:
  std::string path_;
  std::size_t place_;  ///< in the handler's table
};

/// Holds the ending signals back while it lives.
class SignalsHeld {
 public:
  SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld();

 private:
  sigset_t before_{};
};

}  // namespace p3dgrid::tool
