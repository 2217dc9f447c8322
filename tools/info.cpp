#include <memory>
#include <string>

#include "agreement.hpp"
#include "any_file.hpp"
#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "grid_info.hpp"
#include "info_json.hpp"
#include "options.hpp"
#include "restart_info.hpp"

namespace p3dgrid::tool {
namespace {

struct InfoOptions {
  AnyFile input;
  std::string grid_path;  // of a restart file
  bool json = false;
};

constexpr Usage usage = {
    .pair =
        [](const std::string& grid, const std::string& restart) {
          return "p3dgrid info " + restart + " --grid " + grid;
        },
    .grid_alone = [](const std::string& grid) { return "'p3dgrid info " + grid + "' shows it"; },
};

void print_grid(const InfoOptions& options, const Found& found) {
  const Grid grid = read_grid(options.input.path, found);
  if (options.json) return print_text(json_of(options.input.path, found, grid));
  print_grid_info(options.input.path, found, grid);
}

void print_restart(const InfoOptions& options, const RestartReport& report) {
  if (options.json) return print_text(json_of(options.input.path, report));
  print_restart_info(options.input.path, report);
}

void print_info(const InfoOptions& options) {
  if (options.json) keep_output_for_programs();
  if (!options.grid_path.empty()) {
    const Case found = find_case(options.grid_path, options.input.grid, options.input.path,
                                 options.input.restart, usage);
    return print_restart(options, report_on_restart(options.input.path, found));
  }
  const Found found = find_file(options.input);
  if (found.reading.is_grid()) return print_grid(options, found);
  require_regular_file(options.input.path);
  print_restart(options, report_on_restart(options.input.path, found));
}

}  // namespace

Command info_command() {
  const auto options = std::make_shared<InfoOptions>();
  AnyFile& input = options->input;
  Command command{
      .name = "info",
      .meaning = "Show what a file is and what is in it",
      .footer =
          "Examples:\n"
          "  p3dgrid info grid.p3d\n"
          "  p3dgrid info flow.q --json\n"
          "  p3dgrid info grid.bin --grid-format binary --grid-iblank yes\n"
          "  p3dgrid info flow.rst --layout 102 --grid grid.p3d",
      .arguments = {{"FILE", &input.path,
                     "Grid file or restart file; which of the two is found out, or follows from "
                     "any option"}},
      .run = [options] { print_info(*options); }};
  add_grid_options(command, input.grid, &input.grid_option);
  add_restart_options(command, input.restart, &input.restart_option);
  add_grid_of_restart(command, options->grid_path);
  command.options.push_back(
      {"--json", &options->json, "Print the same for programs, and nothing else"});
  return command;
}

}  // namespace p3dgrid::tool
