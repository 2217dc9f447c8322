/// p3dgrid-mpi: describes and converts files that are larger than the memory of one machine. The
/// ranks of an MPI job share their points.

#include <memory>

#include "commands.hpp"
#include "team.hpp"
#include "tools/console.hpp"
#include "tools/failure.hpp"

namespace p3dgrid::tool {
namespace {

Program program(const Team& team) {
  return {
      .name = "p3dgrid-mpi",
      .meaning = "Describes and converts PLOT3D grids and flow solutions with several processes",
      .footer =
          "Exit status: 0 done, 1 a file is damaged or not what the options say,\n"
          "2 wrong usage, a file that matches several forms, or one that cannot be\n"
          "opened or written.\n\n"
          "Examples:\n"
          "  mpirun -n 4 p3dgrid-mpi info grid.p3d\n"
          "  mpirun -n 4 p3dgrid-mpi convert grid.p3d grid.bin --to-format binary\n"
          "  p3dgrid-mpi convert --help",
      .commands = {shared_info_command(team), shared_convert_command(team)}};
}

void run(const Team& team, int argc, const char* const* argv) {
  Request request;
  team.run_on_all([&] { request = read_command_line(program(team), argc, argv); });
  if (!request.run) return print_text(request.text);
  set_quiet(request.quiet);
  request.run();
}

}  // namespace
}  // namespace p3dgrid::tool

int main(int argc, char** argv) {
  using namespace p3dgrid::tool;
  prepare_process();
  set_program_name("p3dgrid-mpi");
  const Team team(argc, argv);
  const ExitStatus work = attempt([&] { run(team, argc, argv); });
  const ExitStatus output = attempt(finish_output);
  return static_cast<int>(work == ExitStatus::done ? output : work);
}
