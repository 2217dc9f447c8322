#include <memory>
#include <string>

#include "commands.hpp"
#include "failure.hpp"
#include "grid_info.hpp"
#include "options.hpp"
#include "restart_info.hpp"

namespace p3dgrid {
namespace {

struct InfoOptions {
  std::string path;
  GridForm grid;
  RestartForm restart;
  std::string grid_path;  // of a restart file
  // The first option of each kind on the command line.
  std::string grid_option;
  std::string restart_option;
};

void print_info(const InfoOptions& options) {
  const bool with_grid = !options.grid_path.empty();
  if (!with_grid && options.restart_option.empty()) {
    return print_grid_info(options.path, options.grid);
  }
  if (with_grid) {
    return print_restart_info(options.path, options.restart, options.grid_path, options.grid);
  }
  if (!options.grid_option.empty()) {
    throw Failure(ExitStatus::unusable, options.grid_option + " describes a grid, and " +
                                            options.path +
                                            " is read as a restart file; --grid names its grid");
  }
  print_restart_info(options.path, options.restart);
}

}  // namespace

Command add_info(CLI::App& program) {
  CLI::App* line = program.add_subcommand(
      "info", "Show what is in a grid file or, with --layout, in a restart file");
  const auto options = std::make_shared<InfoOptions>();
  add_path(*line, "FILE", options->path,
           "Grid file; restart file if any option of restart files is given");
  add_grid_options(*line, options->grid);
  add_restart_options(*line, options->restart);
  add_grid_of_restart(*line, options->grid_path);
  line->footer(
      "Examples:\n"
      "  p3dgrid info grid.p3d\n"
      "  p3dgrid info grid.txt --grid-format formatted\n"
      "  p3dgrid info grid.bin --grid-format binary --grid-precision double --grid-iblank yes\n"
      "  p3dgrid info flow.q --layout 2\n"
      "  p3dgrid info flow.rst --layout 102 --grid grid.p3d");
  // The command line is gone when the work begins.
  line->callback([options, line] {
    options->grid_option = given_grid_option(*line);
    options->restart_option = given_restart_option(*line);
  });
  return {line, [options] { print_info(*options); }};
}

}  // namespace p3dgrid
