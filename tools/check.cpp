#include <memory>
#include <string>

#include "agreement.hpp"
#include "commands.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "options.hpp"

namespace p3dgrid {
namespace {

struct CheckOptions {
  std::string grid_path;
  std::string restart_path;
  GridForm grid;
  RestartForm restart;
};

void check(const CheckOptions& options) {
  if (!holds_extents(options.restart.layout)) {
    throw Failure(ExitStatus::unusable,
                  std::string("layout ") + name_of(options.restart.layout) +
                      " gives no extents to compare; 'p3dgrid info --layout " +
                      name_of(options.restart.layout) +
                      " RESTART --grid GRID' shows whether the lengths fit");
  }
  require_agreement(options.grid_path, options.grid, options.restart_path, options.restart);
  print_line(options.grid_path + " and " + options.restart_path + " agree");
}

}  // namespace

Command add_check(CLI::App& program) {
  CLI::App* line = program.add_subcommand(
      "check", "Make sure that a restart file belongs to a grid: same blocks, same extents");
  const auto options = std::make_shared<CheckOptions>();
  add_path(*line, "GRID", options->grid_path, "Grid file");
  add_path(*line, "RESTART", options->restart_path, "Restart (flow-solution) file");
  add_grid_options(*line, options->grid);
  add_restart_options(*line, options->restart);
  line->footer(
      "Exit status: 0 they agree, 1 they do not, or a header is damaged. Only the headers are\n"
      "read.\n\n"
      "Examples:\n"
      "  p3dgrid check grid.p3d flow.q\n"
      "  p3dgrid check grid.p3d flow.f --layout 3\n"
      "  p3dgrid check grid.txt flow.q --grid-format formatted --restart-precision double");
  return {line, [options] { check(*options); }};
}

}  // namespace p3dgrid
