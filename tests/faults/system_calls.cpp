#include "faults/system_calls.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

#include "support/recording_host.hpp"

namespace faults {
namespace {

bool counting = false;
CallPlan plan;
std::array<int, kinds_of_calls> counts{};

int& count_of(Call call) {
  return counts[static_cast<std::size_t>(call)];
}

bool counted() {
  return counting && test_support::host_at_work == 0;
}

/// Counts the call; true, with `errno` set, if it is to fail.
bool is_to_fail(Call call) {
  if (!counted() || ++count_of(call) != plan.nth || call != plan.call) return false;
  if (plan.before) plan.before();
  errno = plan.error;
  return plan.error != 0;
}

std::size_t piece(std::size_t bytes) {
  return counted() ? std::min(bytes, plan.most_bytes) : bytes;
}

}  // namespace

const char* name_of(Call call) {
  static constexpr std::array<const char*, kinds_of_calls> names{
      "open", "read",  "pread", "write",  "pwrite",    "close",    "fstat",
      "stat", "lstat", "lseek", "unlink", "ftruncate", "fallocate"};
  return names[static_cast<std::size_t>(call)];
}

CallWatch::CallWatch(CallPlan wanted) {
  plan = std::move(wanted);
  counts.fill(0);
  counting = true;
}

CallWatch::~CallWatch() {
  counting = false;
}

int CallWatch::count(Call call) {
  return count_of(call);
}

}  // namespace faults

using faults::Call;
using faults::is_to_fail;

extern "C" {

int __real_open(const char*, int, ...);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_pread(int, void*, size_t, off_t);
ssize_t __real_write(int, const void*, size_t);
ssize_t __real_pwrite(int, const void*, size_t, off_t);
int __real_close(int);
int __real_fstat(int, struct stat*);
int __real_stat(const char*, struct stat*);
int __real_lstat(const char*, struct stat*);
off_t __real_lseek(int, off_t, int);
int __real_unlink(const char*);
int __real_ftruncate(int, off_t);
int __real_fallocate(int, int, off_t, off_t);

int __wrap_open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const int mode = (flags & O_CREAT) != 0 ? va_arg(rest, int) : 0;
  va_end(rest);
  return is_to_fail(Call::open) ? -1 : __real_open(path, flags, mode);
}
ssize_t __wrap_read(int file, void* to, size_t bytes) {
  return is_to_fail(Call::read) ? -1 : __real_read(file, to, faults::piece(bytes));
}
ssize_t __wrap_pread(int file, void* to, size_t bytes, off_t at) {
  return is_to_fail(Call::pread) ? -1 : __real_pread(file, to, faults::piece(bytes), at);
}
ssize_t __wrap_write(int file, const void* from, size_t bytes) {
  return is_to_fail(Call::write) ? -1 : __real_write(file, from, faults::piece(bytes));
}
ssize_t __wrap_pwrite(int file, const void* from, size_t bytes, off_t at) {
  return is_to_fail(Call::pwrite) ? -1 : __real_pwrite(file, from, faults::piece(bytes), at);
}
/// Whatever it reports, the system has closed the file.
int __wrap_close(int file) {
  const bool failed = is_to_fail(Call::close);
  const int error = errno;
  const int result = __real_close(file);
  if (failed) errno = error;
  return failed ? -1 : result;
}
int __wrap_fstat(int file, struct stat* status) {
  return is_to_fail(Call::fstat) ? -1 : __real_fstat(file, status);
}
int __wrap_stat(const char* path, struct stat* status) {
  return is_to_fail(Call::stat) ? -1 : __real_stat(path, status);
}
int __wrap_lstat(const char* path, struct stat* status) {
  return is_to_fail(Call::lstat) ? -1 : __real_lstat(path, status);
}
off_t __wrap_lseek(int file, off_t offset, int whence) {
  return is_to_fail(Call::lseek) ? -1 : __real_lseek(file, offset, whence);
}
int __wrap_unlink(const char* path) {
  return is_to_fail(Call::unlink) ? -1 : __real_unlink(path);
}
int __wrap_ftruncate(int file, off_t length) {
  return is_to_fail(Call::ftruncate) ? -1 : __real_ftruncate(file, length);
}
int __wrap_fallocate(int file, int how, off_t from, off_t bytes) {
  return is_to_fail(Call::fallocate) ? -1 : __real_fallocate(file, how, from, bytes);
}
}
