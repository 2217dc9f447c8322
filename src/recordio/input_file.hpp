#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace mod_p3dgrid::recordio {

/// An existing file read from its start to its end through one buffer.
class InputFile {
 public:
  /// Opens the file. Throws `SystemError` for one that cannot be opened, and for a directory.
  InputFile(std::string path, std::size_t buffer_size);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// Moves the next `bytes` bytes to `destination`. Throws `ReadError` if the file ends before,
  /// once it has moved what is there.
  void read(void* destination, std::int64_t bytes);

  /// Reads `bytes` bytes and drops them. Throws `ReadError` if the file ends before.
  void discard(std::int64_t bytes);

  /// Goes on `bytes` bytes further without looking at what lies between, where the file allows
  /// that. Throws `ReadError` if the file ends before.
  void skip(std::int64_t bytes);

  /// Goes to byte `offset` of a file that allows that. Bytes that are at hand are not read again.
  void go_to(std::int64_t offset);

  /// Leaves out the bytes from `offset` on that have not been read: the file seems to end there.
  void end_at(std::int64_t offset) { end_at_ = offset; }

  /// Bytes that have been taken from the system.
  [[nodiscard]] std::int64_t bytes_taken() const { return bytes_taken_; }

  /// Whether `bytes` more bytes are there. False where that cannot be known.
  [[nodiscard]] bool surely_holds(std::int64_t bytes) const {
    return bytes <= end_ - begin_ || lies_ahead(bytes);
  }

  /// Whether `bytes` more bytes are there and can be read in any order.
  [[nodiscard]] bool lies_ahead(std::int64_t bytes) const;

  /// Moves `bytes` bytes from `distance` bytes behind the place where reading stands, which stays.
  /// Only for what lies ahead. Throws `ReadError` if it is gone meanwhile.
  void read_ahead(std::int64_t distance, void* destination, std::int64_t bytes);

  /// True when there is nothing left to read.
  [[nodiscard]] bool at_end() { return begin_ == end_ && !more(); }

  /// Byte at which the next read begins, counted from 0.
  [[nodiscard]] std::int64_t offset() const { return file_offset_ - (end_ - begin_); }
  /// Bytes read so far.
  [[nodiscard]] std::int64_t bytes_read() const { return offset(); }

  /// Bytes from here to the end of the file, if the file has a size.
  [[nodiscard]] std::optional<std::int64_t> remaining() const;

  /// Whether a list-directed reader may find so many values in the rest of the file: repeat counts
  /// and slashes stand for many. Looks at as much of it as it takes to know, and leaves the place
  /// where reading stands. Throws `ReadError`.
  [[nodiscard]] bool may_hold_values(std::int64_t wanted) const;

  /// @name The bytes at hand
  /// For scanners: the bytes that are read already and wait in the buffer. A zero byte stands
  /// behind them. It and 31 bytes more may be looked at, and so may 32 in front of them, so that
  /// scanners need not ask at every step.
  /// @{
  [[nodiscard]] const char* begin() const { return begin_; }
  [[nodiscard]] const char* end() const { return end_; }
  /// Takes the bytes up to `position` as used.
  void use_up_to(const char* position) { begin_ = position; }
  /// Keeps the unused bytes, moved to the front, and reads more behind them. False at the end of
  /// the file. There must be room: fewer unused bytes than the buffer holds.
  [[nodiscard]] bool more();
  /// @}

 private:
  [[nodiscard]] char* front() const;
  template <class Read>
  [[nodiscard]] static std::size_t completed(std::int64_t at, Read read);
  std::size_t read_some(void* destination, std::size_t bytes);
  void report(std::int64_t bytes) const;
  void drop_buffer();
  [[nodiscard]] std::int64_t read_to_nowhere(std::int64_t bytes);
  [[noreturn]] static void ends_before(std::int64_t missing, std::int64_t at);

  std::string path_;
  std::unique_ptr<char[]> buffer_;
  std::size_t buffer_size_;
  int descriptor_;
  int nowhere_;  ///< the null device, once it is needed
  bool has_size_ = false;
  std::int64_t size_ = 0;   ///< when it was opened, if it has one
  std::int64_t ahead_ = 0;  ///< bytes read ahead since `skip`
  const char* begin_ = nullptr;
  const char* end_ = nullptr;
  std::int64_t file_offset_ = 0;  ///< byte behind those at hand
  std::int64_t bytes_taken_ = 0;
  std::int64_t end_at_ = std::numeric_limits<std::int64_t>::max();
};

}  // namespace mod_p3dgrid::recordio
