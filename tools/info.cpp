#include "info.hpp"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "gzip.hpp"
#include "input_files.hpp"
#include "options.hpp"

namespace p3dgrid::tool {
namespace {

struct InfoOptions {
  AnyFile input;
  std::string grid_path;  // of a restart file
  bool json = false;
  bool index = false;

  [[nodiscard]] bool for_programs() const { return json || index; }
};

constexpr Usage info_usage = {.command_line = "p3dgrid info RESTART --grid GRID",
                              .grid_alone = "'p3dgrid info GRID' shows it"};

void show(const InfoOptions& options, const GridReport& report) {
  if (options.json) return print_text(json_of(options.input.path, report));
  print_info(options.input.path, report);
}

GridReport report_on(const std::string& path, const Found& found) {
  GridInput input(path, found);
  GridReport report{.found = found, .extents = input.extents(), .blocks = {}};
  for (std::size_t b = 0; b < report.extents.i.size(); ++b) {
    report.blocks.emplace_back().include(b, report.extents.of(b), input.read(b));
  }
  input.require_form();
  return report;
}

void show(const InfoOptions& options, const RestartReport& report) {
  if (options.for_programs()) return print_text(json_of(options.input.path, report));
  print_info(options.input.path, report);
}

FlowReport body_of(const RestartReport& report, RestartInput& input) {
  FlowReport body{.parameters = {}, .arrays = std::vector<Findings>(report.arrays())};
  for (std::size_t b = 0; b < report.header.extents.i.size(); ++b) {
    const SolutionBlock block = input.read(b);
    const auto include = [&](const std::vector<Reals>& arrays, bool triplets) {
      for (std::size_t n = 0; n < arrays.size(); ++n) {
        const FlowArray array{static_cast<std::int32_t>(n + 1), triplets};
        body.arrays[report.place_of(array)].include(b, block.extents, arrays[n]);
      }
    };
    include(block.variables, false);
    include(block.triplets, true);
    body.parameters.push_back(block.parameters);
  }
  return body;
}

/// Reads a restart file, whole if the extents of its blocks are known.
RestartReport report_on(const InfoOptions& options, const std::string& path, const Found& found,
                        const std::optional<Extents>& grid) {
  RestartInput input(path, found, grid);
  RestartReport report{.found = found, .header = input.header()};
  if (options.index) {
    report.index = input.index();
    input.require_form();
    return report;
  }
  if (!report.header.extents.i.empty()) {
    report.body = body_of(report, input);
    input.require_form();
  }
  return report;
}

void show_index(const InfoOptions& options, const Found& found) {
  const std::string& path = options.input.path;
  GridInput input(path, found);
  const std::vector<BlockIndex> index = input.index();
  input.require_form();
  print_text(json_of(path, found, input.extents(), index));
}

void show_file(const InfoOptions& options) {
  const std::string& path = options.input.path;
  if (options.for_programs()) keep_output_for_programs();
  if (options.index && original_path(path) != path) {
    throw Unusable(original_path(path) + ": is compressed, and its values have no fixed places");
  }
  if (!options.grid_path.empty()) {
    const Case found =
        find_case(options.grid_path, options.input.grid, path, options.input.restart, info_usage);
    return show(options, report_on(options, path, found.restart, found.extents));
  }
  const Found found = find_file(options.input);
  if (found.reading.is_grid() && options.index) return show_index(options, found);
  if (found.reading.is_grid()) return show(options, report_on(path, found));
  require_regular_file(path);
  show(options, report_on(options, path, found, std::nullopt));
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
      .run = [options] { show_file(*options); }};
  add_grid_options(command, input.grid, &input.grid_option);
  add_restart_options(command, input.restart, &input.restart_option);
  add_grid_of_restart(command, options->grid_path);
  command.options.push_back(
      {"--json", &options->json, "Print the same for programs, and nothing else"});
  command.options.push_back(
      {"--index", &options->index,
       "Print for programs the place of each array in the file instead of its values"});
  return command;
}

}  // namespace p3dgrid::tool
