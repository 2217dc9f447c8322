#include <new>
#include <optional>

#include "command_line.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "process.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

void run(int argc, const char* const* argv) {
  const Request request = read_command_line(argc, argv);
  if (!request.run) {
    print_text(request.text);
    return;
  }
  set_quiet(request.quiet);
  set_verbose(request.verbose);
  connect_library();
  std::optional<Progress> progress;
  if (!request.quiet && !request.no_progress && Progress::has_reader()) progress.emplace();
  request.run();
}

/// Runs a step and turns the way it ends into an exit status.
template <class Step>
ExitStatus attempt(const Step& step) {
  try {
    step();
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
  using p3dgrid::tool::ExitStatus;
  p3dgrid::tool::prepare_process();
  const ExitStatus work = p3dgrid::tool::attempt([&] { p3dgrid::tool::run(argc, argv); });
  const ExitStatus output = p3dgrid::tool::attempt(p3dgrid::tool::finish_output);
  return static_cast<int>(work == ExitStatus::done ? output : work);
}
