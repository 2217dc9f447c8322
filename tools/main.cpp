#include <optional>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

constexpr const char* footer =
    "Exit status: 0 done, 1 a file is damaged or not what the options say,\n"
    "2 wrong usage, a file that matches several forms, or one that cannot be opened or\n"
    "written.\n\n"
    "Examples:\n"
    "  p3dgrid sample demo\n"
    "  p3dgrid info demo/grid.p3d\n"
    "  p3dgrid convert demo/grid.p3d grid.txt --to-format formatted\n"
    "  p3dgrid check demo/grid.p3d demo/flow.q\n"
    "  p3dgrid restart demo/grid.p3d demo/flow.q flow.txt --to-format formatted\n"
    "  p3dgrid tecplot demo/grid.p3d demo/flow.q flow.dat\n"
    "  p3dgrid plot demo/grid.p3d demo/flow.q flow.png --plane k=1\n"
    "  p3dgrid convert --help";

Program program() {
  return {.name = "p3dgrid",
          .meaning = "Reads, describes and converts PLOT3D multi-block grids and flow solutions",
          .footer = footer,
          .commands = {sample_command(), info_command(), convert_command(), check_command(),
                       restart_command(), extract_command(), merge_command(), split_command(),
                       transform_command(), quality_command(), tecplot_command(), vtk_command(),
                       plot_command()}};
}

void run(int argc, const char* const* argv) {
  const Request request = read_command_line(program(), argc, argv);
  if (!request.run) {
    print_text(request.text);
    return;
  }
  set_quiet(request.quiet);
  std::optional<Progress> progress;
  if (!request.quiet && !request.no_progress) progress.emplace();
  request.run();
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
