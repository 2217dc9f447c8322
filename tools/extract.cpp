#include <memory>
#include <p3dgrid/index_range.hpp>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "options.hpp"
#include "parts.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct ExtractOptions {
  std::string blocks;
  IndexRange range;
  bool uneven = false;
  PartOptions files;
};

constexpr Usage extract_usage = {
    .command_line = "p3dgrid extract GRID OUT --restart RESTART OUT",
    .grid_alone = "'p3dgrid extract GRID OUT' without --restart takes a grid alone"};

/// The index as the user counts it.
std::string text_of(std::int32_t index) {
  return index == Indices::all_points ? std::string("last")
                                      : std::to_string(std::int64_t{index} + 1);
}

/// Refuses a range that exceeds the block or, unless it is `uneven`, misses its requested last
/// point. Returns whether it misses that point.
bool require_in(const ExtractOptions& options, Direction direction, const CaseInput& input,
                std::size_t block) {
  const Indices& asked = options.range.of(direction);
  const std::int32_t extent = along(input.extents().of(block), direction);
  const std::string place = input.path() + ": block " + std::to_string(block + 1) + " has " +
                            counted(extent, "point") + " in " + name_of(direction);
  const std::int32_t highest = asked.last == Indices::all_points ? asked.first : asked.last;
  if (highest != Indices::all_points && highest >= extent) {
    throw Unusable(place + ", and there is none of index " + text_of(highest));
  }
  const Indices indices = asked.in(extent);
  const std::int32_t end = asked.last == Indices::all_points ? extent - 1 : asked.last;
  if (indices.last == end) return false;
  if (options.uneven) return true;
  throw Unusable(place + ", and steps of " + std::to_string(asked.stride) + " from " +
                 text_of(indices.first) + " miss the last of them, " + text_of(end) +
                 "; --uneven leaves it out");
}

/// The parts of the selected blocks.
std::vector<Part> parts_of(const ExtractOptions& options, const CaseInput& input) {
  std::vector<Part> parts;
  std::string uneven;
  for (const std::int32_t block :
       blocks_in(options.blocks, input.path(), input.extents().blocks())) {
    const auto b = static_cast<std::size_t>(block);
    bool misses = false;
    for (const Direction d : all_directions) {
      misses = require_in(options, d, input, b) || misses;
    }
    if (misses) uneven += (uneven.empty() ? "" : ",") + std::to_string(block + 1);
    parts.push_back({.block = b, .range = options.range});
  }
  if (!uneven.empty()) {
    print_note(options.files.grids.back() +
               " leaves out the last points of blocks whose extents are no "
               "multiple of the step plus one: " +
               uneven);
  }
  return parts;
}

void extract_parts(const ExtractOptions& options) {
  write_parts(options.files, extract_usage, [&](std::deque<CaseInput>& inputs) {
    return Parts{inputs, parts_of(options, inputs.front())};
  });
}

}  // namespace

Command extract_command() {
  const auto options = std::make_shared<ExtractOptions>();
  Command command{
      .name = "extract",
      .meaning = "Write blocks, index ranges or every n-th point of a grid and its solution",
      .footer =
          "Ranges are FIRST:LAST:STEP, FIRST:LAST or one index, counted from 1; last is the last "
          "point.\n\n"
          "Examples:\n"
          "  p3dgrid extract grid.p3d coarse.p3d --i 1:last:2 --j 1:last:2 --k 1:last:2\n"
          "  p3dgrid extract grid.p3d wall.p3d --blocks 1,3 --j 1\n"
          "  p3dgrid extract grid.p3d coarse.p3d --i 1:last:2 --restart flow.q coarse.q",
      .arguments = grid_and_output(options->files),
      .options = {{"--blocks", &options->blocks,
                   "Blocks in the order to write, counted from 1; default all", "LIST",
                   wrong_block_list}},
      .run = [options] { extract_parts(*options); }};
  for (const Direction direction : all_directions) {
    const auto take = [options = options.get(), direction](const std::string& text) {
      options->range.set(direction, *indices_in(text));
    };
    command.options.push_back(
        {.name = std::string("--") + name_of(direction),
         .target = take,
         .meaning = std::string("Points to take in ") + name_of(direction),
         .value_name = "RANGE",
         .check = checked("is no index range such as 5, last, 1:33 or 1:last:2, counted from 1",
                          indices_in)});
  }
  command.options.push_back({"--uneven", &options->uneven,
                             "Leave out the last points where the steps miss them, with a note, "
                             "instead of refusing"});
  add_part_options(command, options->files);
  return command;
}

}  // namespace p3dgrid::tool
