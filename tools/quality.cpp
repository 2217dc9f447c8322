#include "quality.hpp"

#include <memory>

#include "command.hpp"
#include "console.hpp"
#include "input_files.hpp"
#include "options.hpp"

namespace p3dgrid::tool {
namespace {

struct QualityOptions {
  std::string path;
  StatedForms stated;
  double tolerance = 0;
  bool json = false;
};

constexpr Usage quality_usage = {.command_line = "p3dgrid quality GRID",
                                 .restart_alone = "'p3dgrid info FILE' describes it"};

void show_quality(const QualityOptions& options) {
  if (options.json) keep_output_for_programs();
  const CaseInput input(options.path, "", options.stated, quality_usage);
  GridInput& grid = input.grid();
  QualityReport report;
  FacePoints faces;
  for (std::int32_t b = 0; b < grid.extents().blocks(); ++b) {
    const Block block = grid.read(static_cast<std::size_t>(b));
    report.blocks.push_back(quality_of(block));
    faces.add(b, block);
  }
  grid.require_form();
  report.connections = connections_of(std::move(faces), options.tolerance);
  if (options.json) return print_text(json_of(options.path, report));
  print_quality(options.path, report);
}

}  // namespace

QualityTotals totals_of(const QualityReport& report) {
  QualityTotals totals;
  for (const BlockQuality& block : report.blocks) {
    totals.cells += block.cells;
    totals.invalid_points += block.invalid_points;
    totals.negative += block.negative.count;
    totals.zero_volumes += block.zero_volumes.count;
    totals.zero_edges += block.zero_edges.count;
    totals.left_handed_blocks += static_cast<std::int64_t>(block.handedness == Handedness::left);
  }
  return totals;
}

Command quality_command() {
  const auto options = std::make_shared<QualityOptions>();
  const auto is_tolerance = [](const std::string& text) { return real_in(text).value_or(-1) >= 0; };
  Command command{
      .name = "quality",
      .meaning = "Show volumes, edges and skewness of the cells of a grid, and how its blocks meet",
      .footer =
          "Examples:\n"
          "  p3dgrid quality grid.p3d\n"
          "  p3dgrid quality grid.p3d --tolerance 1e-6 --json",
      .arguments = {{"GRID", &options->path, "Grid file to read"}},
      .options = {{"--tolerance", &options->tolerance,
                   "Largest difference of each coordinate of points that blocks share; default 0",
                   "D", checked("is no distance", is_tolerance)},
                  {"--json", &options->json, "Print the same as JSON"}},
      .run = [options] { show_quality(*options); }};
  add_grid_options(command, options->stated);
  return command;
}

}  // namespace p3dgrid::tool
