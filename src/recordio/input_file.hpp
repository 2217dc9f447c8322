#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace mod_p3dgrid::recordio {

/// An existing file that is read sequentially through one buffer.
class InputFile {
 public:
  /// Opens the file. Throws `SystemError` if that fails, and for a directory.
  InputFile(std::string path, std::size_t buffer_size);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// Copies the next `bytes` bytes to `destination`. If the file ends before, copies what there is
  /// and throws `ReadError`.
  void read(void* destination, std::int64_t bytes);

  /// Reads `bytes` bytes and discards them. Throws `ReadError` if the file ends before.
  void discard(std::int64_t bytes);

  /// Advances by `bytes` bytes, without reading them if the file is seekable. Throws `ReadError` if
  /// the file ends before.
  void skip(std::int64_t bytes);

  /// Goes to byte `offset` of a seekable file. Buffered bytes are not read again.
  void seek(std::int64_t offset);

  /// Treats byte `offset` as the end of the file. Bytes that are buffered already stay.
  void end_at(std::int64_t offset) { end_at_ = offset; }

  /// Bytes received from the system.
  [[nodiscard]] std::int64_t bytes_taken() const { return bytes_taken_; }

  /// Whether the file is known to hold `bytes` more bytes.
  [[nodiscard]] bool surely_holds(std::int64_t bytes) const {
    return bytes <= end_ - begin_ || allows_random_access(bytes);
  }

  /// Whether the file holds `bytes` more bytes and `read_ahead` can read them.
  [[nodiscard]] bool allows_random_access(std::int64_t bytes) const;

  /// Copies `bytes` bytes that begin `distance` bytes after the current position, which stays.
  /// Requires `allows_random_access`. Throws `ReadError` if the file has become shorter.
  void read_ahead(std::int64_t distance, void* destination, std::int64_t bytes);

  [[nodiscard]] bool at_end() { return begin_ == end_ && !more(); }

  /// Position of the next read, from 0.
  [[nodiscard]] std::int64_t offset() const { return file_offset_ - (end_ - begin_); }

  /// Bytes from the position to the end of a regular file; none for others.
  [[nodiscard]] std::optional<std::int64_t> remaining() const;

  /// Whether a list-directed read could find `wanted` values in the rest of the file, where repeat
  /// counts and slashes stand for many. Keeps the position. Throws `ReadError`.
  [[nodiscard]] bool may_hold_values(std::int64_t wanted) const;

  /// @name Buffered bytes
  /// For scanners. A zero byte follows the buffered bytes. It, the 31 bytes after it and the 32
  /// bytes before the buffered ones are readable, so scanners need no bounds checks.
  /// @{
  [[nodiscard]] const char* begin() const { return begin_; }
  [[nodiscard]] const char* end() const { return end_; }
  void consume_to(const char* position) { begin_ = position; }
  /// Moves the unused bytes to the front and appends more. False at the end of the file. Requires
  /// fewer unused bytes than the buffer holds.
  [[nodiscard]] bool more();
  /// @}

 private:
  [[nodiscard]] char* front() const;
  template <class Read>
  [[nodiscard]] static std::size_t completed(std::int64_t at, Read read);
  std::size_t read_some(void* destination, std::size_t bytes);
  void report(std::int64_t bytes) const;
  void drop_buffer();
  [[nodiscard]] std::int64_t discard_in_kernel(std::int64_t bytes);
  [[noreturn]] static void ends_before(std::int64_t missing, std::int64_t at);

  std::string path_;
  std::unique_ptr<char[]> buffer_;
  std::size_t buffer_size_;
  int descriptor_;
  int null_device_;  ///< opened when it is needed first
  bool has_size_ = false;
  std::int64_t size_ = 0;   ///< when it was opened, if it has one
  std::int64_t ahead_ = 0;  ///< bytes read ahead since `skip`
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  std::int64_t file_offset_ = 0;  ///< of the byte after the buffered ones
  std::int64_t bytes_taken_ = 0;
  std::int64_t end_at_ = std::numeric_limits<std::int64_t>::max();
};

}  // namespace mod_p3dgrid::recordio
