#include <CLI/CLI.hpp>
#include <array>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "commands.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "process.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::array commands = {add_sample,  add_info,    add_convert, add_check,
                                 add_restart, add_tecplot, add_plot};

/// What the command line asks for: a command, or a text to show (help, version) and no command.
struct Request {
  std::function<void()> run;
  std::string text;
  bool progress = true;
};

/// Options that every command has.
struct CommonOptions {
  bool quiet = false;
  bool verbose = false;
  bool no_progress = false;
};

std::string without_last_line_end(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

void add_common_options(CLI::App& line, CommonOptions& options) {
  line.add_flag("--quiet", options.quiet, "Leave out notes and the line that says what was done");
  line.add_flag("--verbose", options.verbose,
                "Print the library's own lines too: what it reads and writes, block by block");
  line.add_flag("--no-progress", options.no_progress,
                "Do not show on a terminal how far long reading and writing is");
}

void describe_program(CLI::App& program, CommonOptions& options) {
  program.name("p3dgrid");
  program.set_version_flag("--version", "p3dgrid " P3DGRID_VERSION, "Print the version and exit");
  add_common_options(program, options);
  program.require_subcommand(0, 1);  // none at all is told apart from one that does not exist
  program.footer(
      "Exit status: 0 done, 1 a file is damaged or not what it was said to be,\n"
      "2 wrong usage, a file that can be more than one thing, or one that cannot be opened or\n"
      "written.\n\n"
      "Examples:\n"
      "  p3dgrid sample demo\n"
      "  p3dgrid info demo/grid.p3d\n"
      "  p3dgrid convert demo/grid.p3d grid.txt --to-format formatted\n"
      "  p3dgrid check demo/grid.p3d demo/flow.q\n"
      "  p3dgrid restart demo/grid.p3d demo/flow.q flow.txt --to-format formatted\n"
      "  p3dgrid tecplot demo/grid.p3d demo/flow.q flow.dat\n"
      "  p3dgrid plot demo/grid.p3d demo/flow.q flow.png --plane k=1\n"
      "  p3dgrid convert --help");
}

Failure usage_failure(const CLI::App& program, const CLI::ParseError& error) {
  std::string help = "p3dgrid";
  for (const CLI::App* command : program.get_subcommands()) help += " " + command->get_name();
  return {ExitStatus::unusable,
          without_last_line_end(error.what()) + "; '" + help + " --help' shows the usage"};
}

Request read_command_line(int argc, const char* const* argv) {
  CLI::App program("Reads, describes and converts PLOT3D multi-block grids and flow solutions");
  CommonOptions options;
  describe_program(program, options);
  std::vector<Command> added;
  for (const auto add : commands) {
    added.push_back(add(program));
    add_common_options(*added.back().line, options);
  }
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) throw usage_failure(program, error);
    std::ostringstream text;
    program.exit(error, text, text);
    return {nullptr, without_last_line_end(text.str())};
  }
  if (options.quiet && options.verbose) {
    throw Failure(ExitStatus::unusable,
                  "--quiet and --verbose exclude each other; 'p3dgrid --help' shows the usage");
  }
  set_quiet(options.quiet);
  set_verbose(options.verbose);
  const bool progress = !options.quiet && !options.no_progress;
  for (const Command& command : added) {
    if (command.line->parsed()) return {command.run, "", progress};
  }
  throw Failure(ExitStatus::unusable, "no command; 'p3dgrid --help' shows them");
}

void run(int argc, const char* const* argv) {
  const Request request = read_command_line(argc, argv);
  if (!request.run) {
    print_text(request.text);
    return;
  }
  connect_library();
  std::optional<Progress> progress;
  if (request.progress && Progress::has_reader()) progress.emplace();
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
