#include <fcntl.h>
#include <unistd.h>

#include <MOD_P3DReader.hpp>
#include <cerrno>
#include <csignal>
#include <new>
#include <optional>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

// Opens a standard stream that the caller has closed, for the opposite direction: using it still
// fails, but no other file gets its number.
void occupy(int descriptor, int flags) {
  if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return;
  static_cast<void>(::open("/dev/null", flags));
}

/// Turns a closed pipe and a file-size limit into write errors instead of signals, and occupies the
/// descriptors of closed standard streams, so that no opened file gets one.
void prepare_process() {
  occupy(STDIN_FILENO, O_WRONLY);
  occupy(STDOUT_FILENO, O_RDONLY);
  occupy(STDERR_FILENO, O_RDONLY);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

[[noreturn]] void end_run(const mod_p3dgrid::RunEnd& end) {
  if (end.status == 0) throw Halt();
  throw Unusable(end.message);
}

void run(int argc, const char* const* argv) {
  const Request request = read_command_line(argc, argv);
  if (!request.run) {
    print_text(request.text);
    return;
  }
  set_verbosity(request.quiet, request.verbose);
  mod_p3dgrid::p3dsetmessages(print_library_line);
  mod_p3dgrid::p3dsetrunend(end_run);
  std::optional<Progress> progress;
  if (!request.quiet && !request.no_progress && Progress::has_reader()) progress.emplace();
  request.run();
}

/// Runs a step, prints its failure, and returns the exit status.
template <class Step>
ExitStatus attempt(const Step& step) {
  try {
    with_failures(step);
    return ExitStatus::done;
  } catch (const Failure& failure) {
    print_failure(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    print_failure("not enough memory");
  } catch (const std::exception& error) {
    print_failure(mod_p3dgrid::p3dprintable(error.what()));
  }
  return ExitStatus::unusable;
}

}  // namespace
}  // namespace p3dgrid::tool

int main(int argc, char** argv) {
  using namespace p3dgrid::tool;
  prepare_process();
  const ExitStatus work = attempt([&] { run(argc, argv); });
  const ExitStatus output = attempt(finish_output);
  return static_cast<int>(work == ExitStatus::done ? output : work);
}
