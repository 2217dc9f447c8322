#include "recordio/input_file.hpp"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "recordio/read_error.hpp"
#include "recordio/system_calls.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Readable bytes before and after the buffered ones.
constexpr std::size_t room = 32;

/// Reads of at least this size go straight to their destination.
constexpr std::int64_t direct_read_size = std::int64_t{16} * 1024;

constexpr int not_open = -1;

/// Limit on the values that a repeat count or a slash stands for: more than a record holds, and
/// small enough that their sum over a text cannot overflow.
constexpr std::int64_t most_repeats = std::int64_t{1} << 44;

}  // namespace

InputFile::InputFile(std::string path, std::size_t buffer_size)
    : path_(std::move(path)),
      buffer_(std::make_unique_for_overwrite<char[]>(room + buffer_size + room)),
      buffer_size_(buffer_size),
      descriptor_(open_file(path_, OpenStatus::old)),
      null_device_(not_open) {
  struct stat status;
  const int error = ::fstat(descriptor_, &status) != 0 ? errno
                    : S_ISDIR(status.st_mode)          ? EISDIR
                                                       : 0;
  if (error != 0) {
    ::close(descriptor_);
    throw SystemError{"cannot open", error};
  }
  has_size_ = S_ISREG(status.st_mode);
  size_ = status.st_size;
  begin_ = end_ = front();
  std::memset(buffer_.get(), 0, room + room);
}

InputFile::~InputFile() {
  ::close(descriptor_);
  if (null_device_ != not_open) ::close(null_device_);
}

char* InputFile::front() const {
  return buffer_.get() + room;
}

/// Repeats an interrupted read at byte `at`. Throws `ReadError` if it fails.
template <class Read>
std::size_t InputFile::completed(std::int64_t at, Read read) {
  const ssize_t got = uninterrupted(read);
  if (got >= 0) return static_cast<std::size_t>(got);
  const int error = errno;
  throw ReadError{error, at, std::generic_category().message(error), "the file to be readable"};
}

std::size_t InputFile::read_some(void* destination, std::size_t bytes) {
  const auto most = static_cast<std::size_t>(std::max<std::int64_t>(0, end_at_ - file_offset_));
  const std::size_t got = completed(file_offset_, [&] {
    return ::read(descriptor_, destination, std::min({bytes, most, most_bytes_per_call}));
  });
  file_offset_ += static_cast<std::int64_t>(got);
  bytes_taken_ += static_cast<std::int64_t>(got);
  report(file_offset_);
  return got;
}

void InputFile::report(std::int64_t bytes) const {
  if (has_size_) report_progress({path_, false, bytes, size_});
}

void InputFile::drop_buffer() {
  begin_ = end_ = front();
  *front() = '\0';
}

bool InputFile::more() {
  const std::size_t kept = static_cast<std::size_t>(end_ - begin_);
  std::memmove(front(), begin_, kept);
  begin_ = front();
  end_ = begin_ + kept;
  const std::size_t got = read_some(front() + kept, buffer_size_ - kept);
  end_ += got;
  std::memset(front() + kept + got, 0, room);
  return got != 0;
}

void InputFile::read(void* destination, std::int64_t bytes) {
  char* to = static_cast<char*>(destination);
  while (bytes > 0) {
    if (begin_ != end_) {
      const std::int64_t piece = std::min<std::int64_t>(bytes, end_ - begin_);
      std::memcpy(to, begin_, static_cast<std::size_t>(piece));
      begin_ += piece;
      to += piece;
      bytes -= piece;
    } else if (bytes >= direct_read_size) {
      drop_buffer();
      const std::size_t got = read_some(to, static_cast<std::size_t>(bytes));
      if (got == 0) ends_before(bytes, offset());
      to += got;
      bytes -= static_cast<std::int64_t>(got);
    } else if (!more()) {
      ends_before(bytes, offset());
    }
  }
}

/// Reads and discards bytes without copying them to this process, which is four times as fast.
/// Returns how many; 0 if the system does not support it.
std::int64_t InputFile::discard_in_kernel(std::int64_t bytes) {
  if (!has_size_) return 0;
  if (null_device_ == not_open) null_device_ = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (null_device_ == not_open) return 0;
  const ssize_t got = ::sendfile(null_device_, descriptor_, nullptr,
                                 std::min(static_cast<std::size_t>(bytes), most_bytes_per_call));
  if (got <= 0) return 0;
  drop_buffer();
  file_offset_ += got;
  report(file_offset_);
  return got;
}

void InputFile::discard(std::int64_t bytes) {
  while (bytes > 0) {
    if (begin_ == end_ && bytes >= direct_read_size) {
      const std::int64_t discarded = discard_in_kernel(bytes);
      bytes -= discarded;
      if (discarded > 0) continue;
    }
    if (at_end()) ends_before(bytes, offset());
    const std::int64_t piece = std::min<std::int64_t>(bytes, end_ - begin_);
    begin_ += piece;
    bytes -= piece;
  }
}

void InputFile::skip(std::int64_t bytes) {
  ahead_ = 0;
  if (bytes <= end_ - begin_) {
    begin_ += bytes;
    return;
  }
  const std::optional<std::int64_t> left = remaining();
  if (!left) return discard(bytes);
  if (bytes > *left) ends_before(bytes - *left, offset());
  const std::int64_t target = offset() + bytes;
  if (::lseek(descriptor_, target, SEEK_SET) < 0) return discard(bytes);
  file_offset_ = target;
  drop_buffer();
}

void InputFile::seek(std::int64_t offset) {
  if (offset <= file_offset_ && offset >= file_offset_ - (end_ - front())) {
    begin_ = end_ - (file_offset_ - offset);
    return;
  }
  if (::lseek(descriptor_, offset, SEEK_SET) < 0) {
    const int error = errno;
    throw ReadError{error, offset, std::generic_category().message(error), "a file to go to"};
  }
  file_offset_ = offset;
  drop_buffer();
}

bool InputFile::allows_random_access(std::int64_t bytes) const {
  const std::optional<std::int64_t> left = remaining();
  return left && bytes <= *left;
}

void InputFile::read_ahead(std::int64_t distance, void* destination, std::int64_t bytes) {
  char* to = static_cast<char*>(destination);
  for (std::int64_t at = offset() + distance; bytes > 0;) {
    const std::size_t got = completed(
        at, [&] { return ::pread(descriptor_, to, static_cast<std::size_t>(bytes), at); });
    if (got == 0) ends_before(bytes, at);
    ahead_ += static_cast<std::int64_t>(got);
    report(offset() + ahead_);
    to += got;
    at += static_cast<std::int64_t>(got);
    bytes -= static_cast<std::int64_t>(got);
  }
}

std::optional<std::int64_t> InputFile::remaining() const {
  struct stat status;
  if (!has_size_ || ::fstat(descriptor_, &status) != 0) return std::nullopt;
  return std::max<std::int64_t>(0, status.st_size - offset());
}

bool InputFile::may_hold_values(std::int64_t wanted) const {
  // Each separator may end a value. A repeat count stands for that many values, and a slash for the
  // rest of its record.
  constexpr std::size_t piece_size = std::size_t{64} * 1024;
  const auto piece = std::make_unique_for_overwrite<char[]>(piece_size);
  std::int64_t values = 1;
  std::int64_t count = 0;
  for (std::int64_t at = offset(); values < wanted;) {
    const std::size_t got =
        completed(at, [&] { return ::pread(descriptor_, piece.get(), piece_size, at); });
    if (got == 0) return false;
    at += static_cast<std::int64_t>(got);
    for (const char* c = piece.get(); c != piece.get() + got; ++c) {
      const bool digit = *c >= '0' && *c <= '9';
      if (*c == '*') values += count;
      if (*c == '/') values += most_repeats;
      count = digit ? std::min(count * 10 + (*c - '0'), most_repeats) : 0;
      values += *c == ' ' || *c == ',' || *c == '\t' || *c == '\n' || *c == '\r';
    }
  }
  return true;
}

void InputFile::ends_before(std::int64_t missing, std::int64_t at) {
  throw ReadError{status_end_of_file, at, "the end of the file",
                  std::to_string(missing) + " more bytes"};
}

}  // namespace mod_p3dgrid::recordio
