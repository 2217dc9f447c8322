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

/// A file written from its start to its end through one buffer. Failures throw `SystemError`; after
/// one the file accepts and reports nothing more.
///
/// An existing file is overwritten in place, which saves the system from giving its pages back and
/// fetching new ones, and is cut to its new length when it is closed, in whatever way. One for
/// which writing has not begun stays as it was.
class OutputFile {
 public:
  OutputFile(const std::string& path, Creation creation);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  /// Drops what is not flushed: call `close` to keep it.
  ~OutputFile();

  /// Gives up what the file held before. To be called before anything is written, and where a
  /// record of no bytes is.
  void begin() { begun_ = true; }

  void write(const void* source, std::int64_t bytes);

  /// Room for `bytes` bytes, at most `reserve_limit`, to be filled and then taken with `commit`.
  static constexpr std::size_t reserve_limit = std::size_t{64} * 1024;
  [[nodiscard]] char* reserve(std::size_t bytes);
  void commit(std::size_t bytes) { used_ += bytes; }

  /// Whether the next `bytes` bytes can be written in any order.
  [[nodiscard]] bool lies_ahead(std::int64_t bytes);

  /// Writes `bytes` bytes at `distance` bytes behind the place where writing stands, which stays.
  /// Only where that lies ahead; `skip` then takes all of it as written.
  void write_ahead(std::int64_t distance, const void* source, std::int64_t bytes);
  void skip(std::int64_t bytes) { written_ += bytes; }

  /// Hands everything to the system.
  void flush();

  /// Hands everything to the system and closes the file. A second call does nothing.
  void close();

 private:
  void write_through(const char* source, std::size_t bytes);
  void write_at(const char* source, std::size_t bytes, std::int64_t at);
  void ask_for_space(std::int64_t bytes);
  [[nodiscard]] bool cut();
  [[noreturn]] void fail(const char* operation, int error);

  std::unique_ptr<char[]> buffer_;
  int descriptor_;
  bool begun_ = false;        ///< what the file held before is given up
  bool has_size_ = false;     ///< a regular file, which is written at places of our choice
  std::int64_t space_ = 0;    ///< bytes that the file had or that were asked for, from the start
  std::int64_t written_ = 0;  ///< bytes handed to the system, all from the start
  std::size_t used_ = 0;      ///< bytes in the buffer, behind those
};

}  // namespace mod_p3dgrid::recordio
