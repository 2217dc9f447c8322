#include "info.hpp"

#include <algorithm>
#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "gzip.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "variable_names.hpp"

namespace p3dgrid::tool {
namespace {

struct InfoOptions {
  std::vector<std::string> paths;
  StatedForms stated;
  std::string grid_path;  // of a restart file
  std::string blocks;
  std::vector<std::string> names;  // of variables
  bool json = false;
  bool index = false;

  [[nodiscard]] bool for_programs() const { return json || index; }
};

constexpr Usage info_usage = {.command_line = "p3dgrid info RESTART --grid GRID",
                              .grid_alone = "'p3dgrid info GRID' shows it"};

void take_values(const InfoOptions&, const std::string&, GridInput& input, Report& report) {
  report.begin_surveys();
  for (std::size_t b = 0; b < report.extents.i.size(); ++b) {
    GridFindings findings;
    findings.include(b, report.extents.of(b), input.read(b));
    report.include(b, findings);
  }
}

void take_values(const InfoOptions& options, const std::string& path, RestartInput& input,
                 Report& report) {
  report.begin_surveys(variable_names(path, *report.header, options.names));
  for (std::size_t b = 0; b < report.extents.i.size(); ++b) {
    const SolutionBlock block = input.read(b);
    const auto include = [&](const std::vector<Reals>& arrays, bool triplets) {
      for (std::size_t n = 0; n < arrays.size(); ++n) {
        const FlowArray array{static_cast<std::int32_t>(n + 1), triplets};
        (*report.surveys)[report.place_of(array)].include(b, block.extents, arrays[n]);
      }
    };
    include(block.variables, false);
    include(block.triplets, true);
    if (!block.parameters.empty()) report.parameters.push_back(block.parameters);
  }
}

/// Completes a report with the values of a file whose extents are known, or with their places.
template <class Input>
Report completed(Report report, const InfoOptions& options, const std::string& path, Input& input) {
  if (options.index) {
    report.index = input.index();
  } else if (!report.extents.i.empty()) {
    report.shown = shown_blocks(options.blocks, path, report.extents.blocks());
    take_values(options, path, input, report);
  } else {
    return report;
  }
  input.require_form();
  return report;
}

Report report_on_restart(const InfoOptions& options, const std::string& path, const Found& found,
                         RestartInput& input) {
  const SolutionHeader& header = input.header();
  return completed({.found = found, .extents = header.extents, .header = header}, options, path,
                   input);
}

Report report_on(const InfoOptions& options, const std::string& path) {
  if (!options.grid_path.empty()) {
    const CaseInput input(options.grid_path, path, options.stated, info_usage);
    return report_on_restart(options, path, input.found_restart(), input.restart());
  }
  const Found found = find_file(path, options.stated);
  if (found.reading.is_grid()) {
    if (!options.index && !options.names.empty()) {
      throw Unusable("--names applies to a restart file, and " + path + " is a grid");
    }
    GridInput input(path, found);
    return completed({.found = found, .extents = input.extents()}, options, path, input);
  }
  require_regular_file(path);
  RestartInput input(path, found);
  return report_on_restart(options, path, found, input);
}

void show_file(const InfoOptions& options, const std::string& path) {
  if (options.for_programs()) keep_output_for_programs();
  if (options.index && original_path(path) != path) {
    throw Unusable(original_path(path) + ": is compressed, and its values have no fixed places");
  }
  const Report report = report_on(options, path);
  if (options.for_programs()) return print_text(json_of(path, report));
  print_info(path, report);
}

void show_files(const InfoOptions& options) {
  if (options.paths.size() == 1) return show_file(options, options.paths.front());
  if (options.for_programs()) throw Unusable("--json and --index take one file at a time");
  print_series(options.paths, [&](const std::string& path) { return report_on(options, path); });
}

}  // namespace

Command info_command() {
  const auto options = std::make_shared<InfoOptions>();
  Command command{
      .name = "info",
      .meaning = "Show what a file is and what is in it",
      .footer =
          "Examples:\n"
          "  p3dgrid info grid.p3d\n"
          "  p3dgrid info flow.q --json\n"
          "  p3dgrid info grid.bin --grid-format binary --grid-iblank yes\n"
          "  p3dgrid info flow.rst --layout 102 --grid grid.p3d\n"
          "  p3dgrid info grid.p3d --blocks 1,3\n"
          "  p3dgrid info grid.p3d upper.p3d",
      .arguments = {{"FILE", &options->paths,
                     "Grid file or restart file; the kind is detected, or follows from any "
                     "option. For several files, one line each, with what changes",
                     Argument::Use::inputs}},
      .run = [options] { show_files(*options); }};
  add_input_options(command, options->stated);
  add_grid_of_restart(command, options->grid_path);
  command.options.push_back(
      {"--blocks", &options->blocks,
       "Blocks to show, counted from 1, or all; default all of up to 20, a summary of more", "LIST",
       [](const std::string& text) { return text == "all" ? "" : wrong_block_list(text); }});
  command.options.push_back(names_option(options->names));
  command.options.push_back({"--json", &options->json, "Print the same as JSON, and nothing else"});
  command.options.push_back(
      {"--index", &options->index, "Print the byte ranges of each array as JSON; read no values"});
  return command;
}

}  // namespace p3dgrid::tool
