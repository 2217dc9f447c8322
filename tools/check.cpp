#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct CheckOptions {
  std::string path;  ///< of the grid, where there is a restart file besides
  std::string restart_path;
  StatedForms stated;
};

constexpr Usage check_usage = {.command_line = "p3dgrid check GRID RESTART",
                               .grid_alone = "'p3dgrid check GRID' looks for damage in it"};

/// Bytes after the last record are damage here, although readers can ignore them.
void require_end(const std::string& path, const Found& found) {
  const Reading& reading = found.reading;
  const bool part = reading.fit.agreement == Fit::Agreement::so_far;
  const Fit fit = part ? fit_of(path, reading) : reading.fit;
  if (fit.whole()) return;
  throw Mismatch(path + ": " + fit.what + "; taken as " + describe(found.reading));
}

void check_alone(const CheckOptions& options) {
  const std::string& path = options.path;
  const Found found = find_file(path, options.stated, Look::everywhere);
  if (!found.reading.checked) {
    throw Unusable(path + ": is " + describe(found.reading) +
                   ", which holds no extents; 'p3dgrid check GRID " + path +
                   "' takes them from its grid");
  }
  require_end(path, found);
  print_line(path + ": no damage found; " + describe(found.reading) + "; " +
             counted(*found.reading.extents));
}

void check_pair(const CheckOptions& options) {
  const CaseInput input(options.path, options.restart_path, options.stated, check_usage,
                        Look::everywhere);
  require_end(input.path(), input.found_grid());
  require_end(input.restart_path(), input.found_restart());
  print_line(input.path() + " and " + input.restart_path() + " agree");
}

void check(const CheckOptions& options) {
  return options.restart_path.empty() ? check_alone(options) : check_pair(options);
}

}  // namespace

Command check_command() {
  const auto options = std::make_shared<CheckOptions>();
  Command command{
      .name = "check",
      .meaning =
          "Look for damage in a grid or restart file, or in both and whether they belong together",
      .footer =
          "Exit status: 0 all is well, 1 a file is damaged or the two do not belong together, 2 "
          "it\n"
          "cannot be told.\n\n"
          "Examples:\n"
          "  p3dgrid check grid.p3d\n"
          "  p3dgrid check flow.q\n"
          "  p3dgrid check grid.p3d flow.q\n"
          "  p3dgrid check grid.txt flow.q --restart-precision single",
      .arguments = {{"FILE", &options->path, "Grid file, or restart file alone"},
                    {"RESTART", &options->restart_path, "Restart (flow-solution) file of that grid",
                     Argument::Use::input, Argument::Presence::optional}},
      .run = [options] { check(*options); }};
  add_input_options(command, options->stated);
  return command;
}

}  // namespace p3dgrid::tool
