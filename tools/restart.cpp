#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "file_names.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "restart_conversion.hpp"
#include "restart_file.hpp"
#include "restart_stream.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct RestartOptions {
  std::string grid_path;
  std::string input;
  std::string output;
  StatedGridForm grid;
  StatedRestartForm stated;
  StatedRestartForm change;
  HeaderValues values;
  bool stream = false;
};

constexpr Usage usage = {.command_line = "p3dgrid restart GRID RESTART OUT",
                         .grid_alone = "'p3dgrid convert GRID OUT' converts it"};

void note(const RestartOptions& options, const std::string& text) {
  print_note(options.output + " " + text);
}

void note_what_is_lost(const RestartOptions& options, const RestartForm& read,
                       const RestartForm& written) {
  note_contradiction(options.output, written.coding);
  if (loses_digits(read.coding, written.coding)) {
    print_note("flow variables pass through single precision: " + options.output +
               " holds about 7 digits of each, whatever its own precision");
  }
  if (reads_triplets(traits_of(read.layout), read.coding) && !traits_of(read.layout).extensions &&
      holds_doubles(read.coding)) {
    print_note(options.input +
               ": the triplets of layout 100 are lost when double precision is "
               "read");
  }
  if (traits_of(written.layout).triplets &&
      !reads_triplets(traits_of(written.layout), written.coding)) {
    note(options,
         "cannot be read back: single-precision files of layout 100 are written with "
         "triplets but read without; --to-precision double or --to-format formatted can");
  }
}

/// Why the file cannot be written, as far as its form tells; empty if it can.
std::string obstacle(const RestartOptions& options, const RestartForm& read,
                     const RestartForm& written) {
  if (!traits_of(written.layout).writable) {
    return "files of layout 0 can be read, but not written; --to-layout 1 keeps the step count and "
           "size";
  }
  const std::string why = obstacle(options.values, written.layout);
  return why.empty() && options.stream ? obstacle_to_streaming(read, written) : why;
}

/// The same, as far as the solution tells.
std::string obstacle(const RestartOptions& options, const Restart& restart, const RestartForm& read,
                     const RestartForm& written) {
  const std::string why = obstacle(restart, read, written);
  return why.empty() && options.stream ? obstacle_to_streaming(options.input, read, restart) : why;
}

void convert_restart(const RestartOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.input});
  const Case found =
      find_case(options.grid_path, options.grid, options.input, options.stated, usage);
  const RestartForm& read = found.restart.restart();
  const RestartForm written = applied_to(read, options.change);
  output.require_writable(obstacle(options, read, written));
  const std::optional<Extents> extents = found.extents;
  RestartStream stream(options.input, found.restart, extents);
  Restart restart =
      options.stream ? stream.begin() : read_restart(options.input, found.restart, extents);
  output.require_writable(obstacle(options, restart, read, written));
  for (const std::string& text : adapt(restart, read, written, options.values)) {
    note(options, text);
  }
  note_what_is_lost(options, read, written);
  if (options.stream) {
    stream.write(output, written, restart);
  } else {
    output.write([&] { write_restart(output.temporary_path(), written, restart); });
  }
  output.commit();
  print_summary(options.output + ": " + counted(restart.extents) + ", " +
                counted(restart.variables(), "variable") + ", " + describe(written));
}

}  // namespace

Command restart_command() {
  const auto options = std::make_shared<RestartOptions>();
  Command command{
      .name = "restart",
      .meaning = "Write a restart (flow-solution) file in another encoding, precision or layout",
      .footer =
          "Flow variables pass through single precision, also from double to double.\n\n"
          "Examples:\n"
          "  p3dgrid restart grid.p3d flow.q flow.txt --to-format formatted\n"
          "  p3dgrid restart grid.p3d flow.q flow.rst --to-layout 1 --step 400 --step-size 0.5\n"
          "  p3dgrid restart grid.p3d flow.rst flow.q --to-layout 2 --mach 0.3\n"
          "  p3dgrid restart --stream grid.p3d flow.q flow.rst --to-layout 1",
      .arguments = {{"GRID", &options->grid_path, "Grid file to which the solution belongs"},
                    {"RESTART", &options->input, "Restart file to read"},
                    {"OUT", &options->output, "Restart file to write; replaced whole or not at all",
                     Argument::Use::output}},
      .run = [options] { convert_restart(*options); }};
  add_grid_options(command, options->grid);
  add_restart_options(command, options->stated);
  add_target_options(command, options->change, options->values);
  command.options.push_back({"--stream", &options->stream,
                             "Hold one variable at a time, the others in temporary files beside "
                             "OUT; at most 15 variables"});
  return command;
}

}  // namespace p3dgrid::tool
