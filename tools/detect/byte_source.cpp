#include "detect/byte_source.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "failure.hpp"

namespace p3dgrid {
namespace {

[[noreturn]] void refuse(const std::string& path, int error) {
  throw Failure(ExitStatus::unusable, path + ": " + std::generic_category().message(error));
}

}  // namespace

ByteSource::ByteSource(const std::string& path) : path_(path) {
  // A named pipe must not be waited for; what is not a regular file is refused below.
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor_ < 0) refuse(path, errno);
  struct stat status {};
  const bool known = ::fstat(descriptor_, &status) == 0;
  const int error = known ? EISDIR : errno;
  if (known && S_ISREG(status.st_mode)) {
    size_ = static_cast<std::uint64_t>(status.st_size);
    return;
  }
  ::close(descriptor_);
  if (!known || S_ISDIR(status.st_mode)) refuse(path, error);
  throw Failure(ExitStatus::unusable,
                path + ": is not a regular file, and cannot be looked into before it is read");
}

ByteSource::~ByteSource() {
  ::close(descriptor_);
}

std::size_t ByteSource::read(std::uint64_t offset, std::span<char> to) {
  std::size_t filled = 0;
  while (filled < to.size()) {
    const ssize_t count = ::pread(descriptor_, to.data() + filled, to.size() - filled,
                                  static_cast<off_t>(offset + filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) refuse(path_, errno);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  bytes_read_ += filled;
  return filled;
}

std::optional<std::int32_t> ByteSource::integer(std::uint64_t offset, ByteOrder order) {
  std::array<char, sizeof(std::int32_t)> bytes{};
  if (offset > size_ || size_ - offset < bytes.size()) return std::nullopt;
  const std::uint64_t end = offset + bytes.size();
  if (offset < window_begin_ || end > window_begin_ + window_size_) {
    window_begin_ = offset;
    window_size_ = read(offset, window_);
    if (window_size_ < bytes.size()) return std::nullopt;  // the file has become shorter
  }
  std::memcpy(bytes.data(), window_.data() + (offset - window_begin_), bytes.size());
  if (order != ByteOrder::native) std::ranges::reverse(bytes);
  return std::bit_cast<std::int32_t>(bytes);
}

}  // namespace p3dgrid
