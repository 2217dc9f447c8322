#include <memory>
#include <string>

#include "command.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace p3dgrid::tool {
namespace {

constexpr Usage convert_usage = {.command_line = "p3dgrid convert GRID OUT",
                                 .restart_alone = "'p3dgrid restart GRID FILE OUT' converts it"};

void convert(const PartOptions& options) {
  write_parts(options, convert_usage, [](std::deque<CaseInput>& inputs) {
    return Parts{inputs, whole_blocks(inputs)};
  });
}

}  // namespace

Command convert_command() {
  const auto options = std::make_shared<PartOptions>();
  Command command{
      .name = "convert",
      .meaning = "Write a grid in another encoding or precision",
      .footer =
          "Examples:\n"
          "  p3dgrid convert grid.p3d grid.txt --to-format formatted\n"
          "  p3dgrid convert grid.txt grid.p3d --to-format unformatted --to-byte-order big\n"
          "  p3dgrid convert grid.p3d grid.bin --to-format binary --to-precision double",
      .arguments = grid_and_output(*options),
      .run = [options] { convert(*options); }};
  add_grid_options(command, options->stated);
  add_target_options(command, options->change);
  return command;
}

}  // namespace p3dgrid::tool
