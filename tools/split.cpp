#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace p3dgrid::tool {
namespace {

struct SplitOptions {
  std::optional<IndexPlane> plane;
  PartOptions files;
};

constexpr Usage split_usage = {
    .command_line = "p3dgrid split GRID OUT --restart RESTART OUT",
    .grid_alone = "'p3dgrid split GRID OUT' without --restart takes a grid alone"};

/// Parses an index plane that is neither the first nor `last`; none for any other text.
std::optional<IndexPlane> plane_in(const std::string& text) {
  const auto plane = index_plane_in(text);
  const bool inside = plane && plane->index > 0 && plane->index != Indices::all_points;
  return inside ? plane : std::nullopt;
}

using Lists = std::vector<std::vector<Part>>;

/// A list of parts for each file: one block each.
Lists one_block_each(const std::deque<CaseInput>& inputs) {
  Lists lists;
  for (const Part& part : whole_blocks(inputs)) lists.push_back({part});
  return lists;
}

/// A list of parts for each of two files, both with the points of the plane.
Lists before_and_after(const IndexPlane& plane, const std::deque<CaseInput>& inputs) {
  const std::string name = describe(plane);
  Lists lists(2);
  std::string before;
  for (Part part : whole_blocks(inputs)) {
    const bool reaches =
        along(inputs.front().extents().of(part.block), plane.direction) > plane.index + 1;
    if (!reaches) before += (before.empty() ? "" : ",") + std::to_string(part.block + 1);
    part.range.set(plane.direction, {0, plane.index});
    lists[0].push_back(part);
    part.range.set(plane.direction, {plane.index});
    if (reaches) lists[1].push_back(part);
  }
  if (lists[1].empty()) {
    throw Unusable(inputs.front().path() + ": no block has points on both sides of " + name +
                   "; 'p3dgrid info' shows the extents");
  }
  if (!before.empty()) {
    print_note(inputs.front().path() + ": blocks without points beyond " + name +
               " are whole in the first file: " + before);
  }
  return lists;
}

void split(const SplitOptions& options) {
  const PartOptions& files = options.files;
  const std::string solution = files.solution_output();
  std::deque<CaseInput> inputs = open_cases(files, split_usage);
  const Lists lists =
      options.plane ? before_and_after(*options.plane, inputs) : one_block_each(inputs);
  std::deque<PartOutput> outputs;
  for (std::size_t n = 0; n < lists.size(); ++n) {
    outputs.emplace_back(files, numbered_path(files.grids.back(), n + 1, lists.size()),
                         numbered_path(solution, n + 1, lists.size()));
  }
  for (std::size_t n = 0; n < lists.size(); ++n) outputs[n].write({inputs, lists[n]});
  for (PartOutput& output : outputs) output.commit();
}

}  // namespace

Command split_command() {
  const auto options = std::make_shared<SplitOptions>();
  Command command{
      .name = "split",
      .meaning =
          "Write each block of a grid, or the two sides of an index plane, into its own file",
      .footer =
          "The files are named after OUT with numbers: of grid.p3d grid-1.p3d, grid-2.p3d.\n\n"
          "Examples:\n"
          "  p3dgrid split grid.p3d block.p3d --restart flow.q block.q\n"
          "  p3dgrid split grid.p3d side.p3d --at i=17",
      .arguments = grid_and_output(options->files, "Grid files to write, without their numbers"),
      .options = {parsed({"--at",
                          {},
                          "Write two files: the points up to this plane, and those from it on",
                          "PLANE"},
                         options->plane, plane_in, "is no plane inside a block such as i=33")},
      .run = [options] { split(*options); }};
  add_part_options(command, options->files);
  return command;
}

}  // namespace p3dgrid::tool
