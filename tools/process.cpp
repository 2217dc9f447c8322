#include "process.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <MOD_P3DReader.hpp>
#include <cerrno>
#include <csignal>
#include <utility>

#include "console.hpp"
#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

// A stream that was closed by the caller is opened the wrong way round: using it still fails, as
// it should, but its number cannot go to the next file that is opened.
void occupy(int descriptor, int flags) {
  if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return;
  static_cast<void>(::open("/dev/null", flags));
}

void show_messages() {
  mod_p3dgrid::p3dsetmessages(print_library_line);
}

[[noreturn]] void end_run(const mod_p3dgrid::RunEnd& end) {
  if (end.status == 0) throw Halt();
  throw Failure(ExitStatus::unusable, end.message);
}

}  // namespace

void prepare_process() {
  occupy(STDIN_FILENO, O_WRONLY);
  occupy(STDOUT_FILENO, O_RDONLY);
  occupy(STDERR_FILENO, O_RDONLY);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void connect_library() {
  show_messages();
  mod_p3dgrid::p3dsetrunend(end_run);
}

LibraryMessages::LibraryMessages(std::function<void(std::string_view)> sink) {
  mod_p3dgrid::p3dsetmessages(std::move(sink));
}

LibraryMessages::~LibraryMessages() {
  show_messages();
}

}  // namespace p3dgrid::tool
