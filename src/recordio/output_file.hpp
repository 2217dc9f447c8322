#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace mod_p3dgrid::recordio {

enum class Creation {
  replace,  ///< an existing file is overwritten, a missing one created
  fresh,    ///< the file must not exist
};

/// A file written from its start to its end through one buffer. Every failure is an error of the
/// run; after one the file accepts and reports nothing more.
class OutputFile {
 public:
  OutputFile(std::string path, Creation creation);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  /// Drops what is not flushed: call `close` to keep it.
  ~OutputFile();

  void write(const void* source, std::int64_t bytes);

  /// Room for `bytes` bytes, at most `reserve_limit`, to be filled and then taken with `commit`.
  static constexpr std::size_t reserve_limit = 64 * 1024;
  [[nodiscard]] char* reserve(std::size_t bytes);
  void commit(std::size_t bytes) { used_ += bytes; }

  /// Hands everything to the system.
  void flush();

  /// Hands everything to the system and closes the file. A second call does nothing.
  void close();

 private:
  void write_through(const char* source, std::size_t bytes);
  [[noreturn]] void fail(const char* operation, int error);

  std::string path_;
  std::unique_ptr<char[]> buffer_;
  int descriptor_;
  std::size_t used_ = 0;
};

}  // namespace mod_p3dgrid::recordio
