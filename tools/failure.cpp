#include "failure.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "console.hpp"

namespace p3dgrid::tool {
namespace {

// Opens a standard stream that the caller has closed, for the opposite direction: using it still
// fails, but no other file gets its descriptor.
void occupy(int descriptor, int flags) {
  if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return;
  static_cast<void>(::open("/dev/null", flags));
}

}  // namespace

void prepare_process() {
  occupy(STDIN_FILENO, O_WRONLY);
  occupy(STDOUT_FILENO, O_RDONLY);
  occupy(STDERR_FILENO, O_RDONLY);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

std::optional<Failure> failure_of(const std::function<void()>& step) {
  try {
    with_failures(step);
    return std::nullopt;
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return Unusable("not enough memory");
  } catch (const std::exception& error) {
    return Unusable(error.what());
  }
}

ExitStatus attempt(const std::function<void()>& step) {
  const std::optional<Failure> failure = failure_of(step);
  if (!failure) return ExitStatus::done;
  print_failure(failure->what());
  return failure->status();
}

}  // namespace p3dgrid::tool
