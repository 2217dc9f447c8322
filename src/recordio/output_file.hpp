#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "recordio/system_calls.hpp"

namespace mod_p3dgrid::recordio {

/// A file that is written sequentially through one buffer. Failures throw `SystemError`; after one
/// all further calls do nothing.
///
/// An existing file is overwritten in place, which is faster than freeing its pages first, and is
/// truncated when it is closed or destroyed. Without a call of `begin` it stays unchanged.
class OutputFile {
 public:
  OutputFile(std::string path, OpenStatus how);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  /// Discards what has not been flushed; call `close` to keep it.
  ~OutputFile();

  /// Gives up the old contents. To be called before the first record, even an empty one.
  void begin() { begun_ = true; }

  void write(const void* source, std::int64_t bytes);

  /// Buffer for `bytes` bytes, at most `reserve_limit`, to be filled and then appended by `commit`.
  static constexpr std::int64_t reserve_limit = std::int64_t{64} * 1024;
  [[nodiscard]] char* reserve(std::int64_t bytes);
  void commit(std::int64_t bytes) { used_ += bytes; }

  /// Whether `write_ahead` can write the next `bytes` bytes.
  [[nodiscard]] bool allows_random_access(std::int64_t bytes);

  /// Writes `bytes` bytes `distance` bytes after the current position, which stays. Requires
  /// `allows_random_access`; `skip` then advances the position.
  void write_ahead(std::int64_t distance, const void* source, std::int64_t bytes);
  void skip(std::int64_t bytes) { written_ += bytes; }

  /// Leaves a gap of `bytes` bytes that are written later by other means. In a new file they are 0
  /// until then.
  void leave(std::int64_t bytes);

  void flush();

  /// Flushes, truncates and closes the file. A second call does nothing.
  void close();

 private:
  void write_through(const char* source, std::int64_t bytes);
  void preallocate(std::int64_t bytes);
  [[nodiscard]] bool truncate();
  [[noreturn]] void fail(const char* operation, int error);

  std::string path_;
  std::unique_ptr<char[]> buffer_;
  int descriptor_;
  bool begun_ = false;        ///< the old contents are given up
  bool has_size_ = false;     ///< a regular file, which allows random access
  bool has_gaps_ = false;     ///< a gap has been left, possibly at the end
  std::int64_t space_ = 0;    ///< old size of the file, or preallocated size if larger
  std::int64_t written_ = 0;  ///< position: bytes written before the buffered ones
  std::int64_t moved_ = 0;    ///< bytes written, random access included
  std::int64_t used_ = 0;     ///< bytes in the buffer
};

}  // namespace mod_p3dgrid::recordio
