#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
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

struct RestartOptions {
  std::string grid_path;
  std::string input;
  std::string output;
  StatedForms stated;
  StatedRestartForm change;
  HeaderValues values;
  bool stream = false;
};

constexpr Usage restart_usage = {.command_line = "p3dgrid restart GRID RESTART OUT",
                                 .grid_alone = "'p3dgrid convert GRID OUT' converts it"};

void convert_restart(const RestartOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.input});
  std::deque<CaseInput> inputs;
  inputs.emplace_back(options.grid_path, options.input, options.stated, restart_usage);
  const std::string summary =
      write_restart(output, {inputs, whole_blocks(inputs)}, options.change, options.values);
  output.commit();
  print_summary(summary);
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

Command restart_command() {
  const auto options = std::make_shared<RestartOptions>();
  Command command{
      .name = "restart",
      .meaning = "Write a restart (flow-solution) file in another encoding, precision or layout",
      .footer =
          "Examples:\n"
          "  p3dgrid restart grid.p3d flow.q flow.txt --to-format formatted\n"
          "  p3dgrid restart grid.p3d flow.q flow.rst --to-layout 1 --step 400 --step-size 0.5\n"
          "  p3dgrid restart grid.p3d flow.rst flow.q --to-layout 2 --mach 0.3",
      .arguments = {{"GRID", &options->grid_path, "Grid file to which the solution belongs"},
                    {"RESTART", &options->input, "Restart file to read"},
                    {"OUT", &options->output, "Restart file to write; replaced whole or not at all",
                     Argument::Use::output}},
      .run = [options] { convert_restart(*options); }};
  add_input_options(command, options->stated);
  add_target_options(command, options->change, options->values);
  command.options.push_back(
      {"--stream", &options->stream,
       "Accepted for older scripts: one array is held at a time, with or without"});
  return command;
}

}  // namespace p3dgrid::tool
