/// Preloaded into a process, ends it with a signal in the middle of its n-th system call that
/// changes files: END_AT is n, END_WITH the number of the signal. The first INTERRUPTED_FSYNCS
/// calls that force a file to the disk are interrupted.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>

namespace {

int number_in(const char* variable) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? 0 : std::atoi(text);
}

/// Counts the call; true for the one to end at.
bool is_the_one() {
  static const int end_at = number_in("END_AT");
  static int calls = 0;
  return ++calls == end_at;
}

void end_process() {
  ::kill(::getpid(), number_in("END_WITH"));
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const int mode = (flags & O_CREAT) != 0 ? va_arg(rest, int) : 0;
  va_end(rest);
  const int file = next<int(const char*, int, ...)>("open")(path, flags, mode);
  if ((flags & O_CREAT) != 0 && is_the_one()) end_process();
  return file;
}

ssize_t write(int file, const void* from, size_t bytes) {
  static const auto real = next<ssize_t(int, const void*, size_t)>("write");
  if (file <= STDERR_FILENO || !is_the_one()) return real(file, from, bytes);
  const ssize_t written = real(file, from, bytes / 2);
  end_process();
  return written;
}

ssize_t pwrite(int file, const void* from, size_t bytes, off_t at) {
  static const auto real = next<ssize_t(int, const void*, size_t, off_t)>("pwrite");
  if (!is_the_one()) return real(file, from, bytes, at);
  const ssize_t written = real(file, from, bytes / 2, at);
  end_process();
  return written;
}

int rename(const char* from, const char* to) {
  if (is_the_one()) end_process();
  const int result = next<int(const char*, const char*)>("rename")(from, to);
  if (is_the_one()) end_process();
  return result;
}

int unlink(const char* path) {
  if (is_the_one()) end_process();
  return next<int(const char*)>("unlink")(path);
}

int fsync(int file) {
  static int interruptions = number_in("INTERRUPTED_FSYNCS");
  if (interruptions-- > 0) {
    errno = EINTR;
    return -1;
  }
  if (is_the_one()) end_process();
  return next<int(int)>("fsync")(file);
}

int fchmod(int file, mode_t mode) {
  if (is_the_one()) end_process();
  return next<int(int, mode_t)>("fchmod")(file, mode);
}

int ftruncate(int file, off_t length) {
  if (is_the_one()) end_process();
  return next<int(int, off_t)>("ftruncate")(file, length);
}
}
