#include <memory>
#include <string>

#include "agreement.hpp"
#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
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

constexpr Usage usage = {
    .pair =
        [](const std::string& grid, const std::string& restart) {
          return "p3dgrid restart " + grid + " " + restart + " OUT";
        },
    .grid_alone =
        [](const std::string& grid) { return "'p3dgrid convert " + grid + " OUT' converts it"; },
};

[[noreturn]] void refuse(const RestartOptions& options, const std::string& why) {
  throw Failure(ExitStatus::unusable, options.output + ": not written: " + why);
}

/// What can be seen to be impossible before anything is read.
void require_writable_layout(const RestartOptions& options, Layout layout) {
  if (layout == Layout::talven) {
    refuse(options,
           "files of layout 0 can be read, but not written; --to-layout 1 keeps the step "
           "count and size");
  }
  const std::string why = obstacle(options.values, layout);
  if (!why.empty()) refuse(options, why);
}

void note(const RestartOptions& options, const std::string& text) {
  print_note(options.output + " " + text);
}

void note_what_is_lost(const RestartOptions& options, const RestartForm& read,
                       const RestartForm& written) {
  if (loses_digits(read.coding, written.coding)) {
    print_note("flow variables pass through single precision: " + options.output +
               " holds about 7 digits of each, whatever its own precision");
  }
  if (reads_triplets(traits_of(read.layout), read.coding) && read.layout == Layout::triplets &&
      holds_doubles(read.coding)) {
    print_note(options.input +
               ": the triplets of layout 100 are lost when double precision is "
               "read");
  }
  if (written.layout == Layout::triplets &&
      !reads_triplets(traits_of(written.layout), written.coding)) {
    note(options,
         "cannot be read back: single-precision files of layout 100 are written with "
         "triplets but read without; --to-precision double or --to-format formatted can");
  }
}

void write_whole(const RestartOptions& options, const RestartForm& form, const Restart& restart,
                 const OutputFile& output) {
  try {
    write_restart(output.temporary_path(), form, restart);
  } catch (const Failure& failure) {
    throw Failure(failure.status(), options.output + ": not written: " + failure.what());
  }
}

/// What can be seen to come out differently before anything is read.
void require_streamable(const RestartOptions& options, const RestartForm& read,
                        const RestartForm& written) {
  const std::string why = obstacle_to_streaming(read, written);
  if (!why.empty()) refuse(options, why);
}

void require_possible(const RestartOptions& options, const Restart& restart,
                      const RestartForm& read, const RestartForm& written) {
  std::string why = obstacle(restart, read, written);
  if (why.empty() && options.stream) {
    why = obstacle_to_streaming(options.input, read, restart);
  }
  if (!why.empty()) refuse(options, why);
}

void convert_restart(const RestartOptions& options) {
  require_different_files(options.grid_path, options.output);
  require_different_files(options.input, options.output);
  // Reserved before the reading starts: a folder that takes no files shows at once.
  OutputFile output(options.output);
  const Case found =
      find_case(options.grid_path, options.grid, options.input, options.stated, usage);
  const RestartForm& read = found.restart.restart();
  const RestartForm written = applied_to(read, options.change);
  require_writable_layout(options, written.layout);
  if (options.stream) require_streamable(options, read, written);
  const std::optional<Extents> extents = found.extents;
  RestartStream stream(options.input, found.restart, extents);
  Restart restart = options.stream ? stream.begin() : read_restart_of_grid(options.input, found);
  require_possible(options, restart, read, written);
  for (const std::string& text : adapt(restart, read, written, options.values)) {
    note(options, text);
  }
  note_what_is_lost(options, read, written);
  if (options.stream) {
    stream.write(output.temporary_path(), options.output, written, restart);
  } else {
    write_whole(options, written, restart, output);
  }
  output.commit();
  print_summary(options.output + ": " + counted(restart.extents.blocks(), "block") + ", " +
                counted(restart.extents.points(), "point") + ", " +
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
                    {"OUT", &options->output,
                     "Restart file to write; replaced whole or not at all"}},
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
