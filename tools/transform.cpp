#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace p3dgrid::tool {
namespace {

struct TransformOptions {
  double scale = 1;
  std::vector<double> translation;
  std::optional<CoordinatePlane> mirror;
  Orientation orientation;
  PartOptions files;
};

constexpr Usage transform_usage = {
    .command_line = "p3dgrid transform GRID OUT --restart RESTART OUT",
    .grid_alone = "'p3dgrid transform GRID OUT' without --restart takes a grid alone"};

/// Scales, moves and mirrors the coordinates.
void change(const TransformOptions& options, Block& block) {
  const std::optional<CoordinatePlane>& plane = options.mirror;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double shift = options.translation.empty() ? 0 : options.translation[axis];
    const bool moves = options.scale != 1 || shift != 0;
    const bool mirrors = plane && plane->axis == axis;
    Reals& values = axis == 0 ? block.x : axis == 1 ? block.y : block.z;
    values.visit([&]<class Real>(std::span<Real> reals) {
      for (Real& value : reals) {
        double changed = moves ? options.scale * value + shift : value;
        if (mirrors) changed = plane->value == 0 ? -changed : 2 * plane->value - changed;
        value = static_cast<Real>(changed);
      }
    });
  }
}

/// The direction that is reversed in a mirrored block to keep its handedness: the first in which it
/// has more than one point.
Direction reversed_direction(const BlockExtents& block) {
  for (const Direction d : all_directions) {
    if (along(block, d) > 1) return d;
  }
  return Direction::i;
}

std::vector<Part> parts_of(const TransformOptions& options, const std::deque<CaseInput>& inputs) {
  std::vector<Part> parts = whole_blocks(inputs);
  std::map<Direction, std::string> reversed;
  for (Part& part : parts) {
    part.orientation = options.orientation;
    if (!options.mirror) continue;
    const Direction direction = reversed_direction(inputs.front().extents().of(part.block));
    part.orientation = Orientation::reverse(direction).then(options.orientation);
    std::string& blocks = reversed[direction];
    blocks += (blocks.empty() ? "" : ",") + std::to_string(part.block + 1);
  }
  for (const auto& [direction, blocks] : reversed) {
    print_note(options.files.grids.back() + ": " + name_of(direction) +
               " is reversed, which keeps the handedness of mirrored blocks" +
               (reversed.size() > 1 ? ": " + blocks : ""));
  }
  if (!options.orientation.keeps_handedness()) {
    print_note(options.files.grids.back() +
               ": right-handed blocks become left-handed, and the reverse; one more direction in "
               "--reverse keeps their handedness");
  }
  return parts;
}

/// Changes the sign of the momentum normal to the mirror plane.
void mirror(const CoordinatePlane& plane, const FlowArray& array, Reals& values) {
  if (array != FlowArray{static_cast<std::int32_t>(plane.axis) + 2}) return;
  values.visit([](auto reals) {
    for (auto& value : reals) value = -value;
  });
}

Parts transformed(const TransformOptions& options, std::deque<CaseInput>& inputs) {
  Parts parts{inputs, parts_of(options, inputs)};
  parts.edit_block = [&](Block& block) { change(options, block); };
  if (options.mirror && options.files.has_solution()) {
    const Layout layout = inputs.front().restart_form().layout;
    if (traits_of(layout).parameters > 0) {
      parts.edit_array = [&](const FlowArray& array, Reals& values) {
        mirror(*options.mirror, array, values);
      };
    } else {
      print_note(options.files.solutions.back() + ": variables of layout " + name_of(layout) +
                 " are not mirrored; vectors among them keep their signs");
    }
  }
  return parts;
}

void transform(const TransformOptions& options) {
  write_parts(options.files, transform_usage,
              [&](std::deque<CaseInput>& inputs) { return transformed(options, inputs); });
}

std::vector<Option> transform_options(TransformOptions& options) {
  const auto is_scale = [](const std::string& text) { return real_in(text).value_or(0) > 0; };
  const auto take_swap = [&](const std::string& text) {
    options.orientation =
        Orientation::swap(*direction_in(text.substr(0, 1)), *direction_in(text.substr(1)))
            .then(options.orientation);
  };
  const auto take_reversed = [&](const std::string& text) {
    for (const char name : text) {
      const auto direction = direction_in(std::string(1, name));
      options.orientation = options.orientation.then(Orientation::reverse(*direction));
    }
  };
  return {{"--scale", &options.scale, "Multiply all coordinates", "S",
           checked("is no factor above 0", is_scale)},
          {.name = "--translate",
           .target = &options.translation,
           .meaning = "Then add to x, y and z",
           .value_name = "X Y Z",
           .check = checked("is no number", real_in),
           .values = 3},
          parsed({"--mirror", {}, "Then mirror at a plane, such as y=0", "PLANE"}, options.mirror,
                 coordinate_plane_in, "is no plane such as y=0"),
          {.name = "--swap",
           .target = take_swap,
           .meaning = "Exchange two index directions",
           .choices = {"ij", "ik", "jk"}},
          {.name = "--reverse",
           .target = take_reversed,
           .meaning = "Then reverse index directions",
           .choices = {"i", "j", "k", "ij", "ik", "jk", "ijk"}}};
}

}  // namespace

Command transform_command() {
  const auto options = std::make_shared<TransformOptions>();
  Command command{.name = "transform",
                  .meaning = "Scale, move or mirror a grid, swap or reverse its index directions",
                  .footer =
                      "Examples:\n"
                      "  p3dgrid transform grid.p3d metres.p3d --scale 0.0254\n"
                      "  p3dgrid transform grid.p3d left.p3d --mirror y=0 --restart flow.q left.q\n"
                      "  p3dgrid transform grid.p3d turned.p3d --swap ij --reverse k",
                  .arguments = grid_and_output(options->files),
                  .options = transform_options(*options),
                  .run = [options] { transform(*options); }};
  add_part_options(command, options->files);
  return command;
}

}  // namespace p3dgrid::tool
