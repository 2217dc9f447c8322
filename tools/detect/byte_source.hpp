#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "encoding.hpp"

namespace p3dgrid {

/// A file of which few bytes are wanted, from places far apart. It counts what it takes from the
/// disk.
class ByteSource {
 public:
  /// Throws a Failure that names the file when it cannot be opened, or is not a regular one.
  explicit ByteSource(const std::string& path);
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  ~ByteSource();

  [[nodiscard]] std::uint64_t size() const { return size_; }
  [[nodiscard]] std::uint64_t bytes_read() const { return bytes_read_; }

  /// Fills `to` with the bytes from `offset` on; returns how many there are.
  std::size_t read(std::uint64_t offset, std::span<char> to);

  /// The 32-bit integer at `offset`; none where the file ends before it does.
  std::optional<std::int32_t> integer(std::uint64_t offset, ByteOrder order);

 private:
  std::string path_;
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  std::uint64_t bytes_read_ = 0;
  // A window over the place read last: the marker behind a record stands beside that of the next.
  std::array<char, 256> window_{};
  std::uint64_t window_begin_ = 0;
  std::size_t window_size_ = 0;
};

}  // namespace p3dgrid
