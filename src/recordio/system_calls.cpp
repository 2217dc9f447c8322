#include "recordio/system_calls.hpp"

#include <fcntl.h>

#include <utility>

#include "recordio/read_error.hpp"

int mod_p3dgrid::recordio::open_file(const std::string& path, OpenStatus status) {
  const bool reads = status == OpenStatus::old;
  const int how = reads ? O_RDONLY : O_WRONLY | O_CREAT;
  const int only_fresh = status == OpenStatus::fresh ? O_EXCL : 0;
  constexpr mode_t permissions = 0666;  // without the umask
  const int descriptor = uninterrupted(
      [&] { return ::open(path.c_str(), how | only_fresh | O_CLOEXEC, permissions); });
  if (descriptor < 0) throw SystemError{reads ? "cannot open" : "cannot create", errno};
  return descriptor;
}

void mod_p3dgrid::p3dsetprogress(std::function<void(const FileProgress&)> observer) {
  recordio::progress_observer.set(std::move(observer));
}
