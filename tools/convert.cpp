#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace p3dgrid::tool {
namespace {

struct ConvertOptions {
  std::string input;
  std::string output;
  StatedForms stated;
  StatedGridForm change;
};

constexpr Usage convert_usage = {.command_line = "p3dgrid convert GRID OUT",
                                 .restart_alone = "'p3dgrid restart GRID FILE OUT' converts it"};

void convert(const ConvertOptions& options) {
  OutputFile output(options.output, {options.input});
  std::deque<CaseInput> inputs;
  inputs.emplace_back(options.input, "", options.stated, convert_usage);
  const std::string summary = write_grid(output, {inputs, whole_blocks(inputs)}, options.change);
  output.commit();
  print_summary(summary);
}

}  // namespace

Command convert_command() {
  const auto options = std::make_shared<ConvertOptions>();
  Command command{
      .name = "convert",
      .meaning = "Write a grid in another encoding or precision",
      .footer =
          "Examples:\n"
          "  p3dgrid convert grid.p3d grid.txt --to-format formatted\n"
          "  p3dgrid convert grid.txt grid.p3d --to-format unformatted --to-byte-order big\n"
          "  p3dgrid convert grid.p3d grid.bin --to-format binary --to-precision double",
      .arguments = {{"GRID", &options->input, "Grid file to read"},
                    {"OUT", &options->output, "Grid file to write; replaced whole or not at all",
                     Argument::Use::output}},
      .run = [options] { convert(*options); }};
  add_grid_options(command, options->stated);
  add_target_options(command, options->change);
  return command;
}

}  // namespace p3dgrid::tool
