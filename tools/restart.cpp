#include <algorithm>
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

constexpr Usage restart_usage = {.command_line = "p3dgrid restart GRID RESTART OUT",
                         .grid_alone = "'p3dgrid convert GRID OUT' converts it"};

void note(const RestartOptions& options, const std::string& text) {
  print_note(options.output + " " + text);
}

void note_what_is_lost(const RestartOptions& options, const RestartForm& read,
                       const RestartForm& written) {
  if (rounds_text(read.coding, options.change.coding, written.coding)) {
    note(options, "holds about 7 digits of each variable; --to-precision double keeps more");
  }
}

/// Why the file cannot be written, as far as its form tells; empty if it can.
std::string obstacle_to_form(const RestartOptions& options, const RestartForm& written) {
  if (!traits_of(written.layout).writable) {
    return traits_of(written.layout).more_parameters
               ? "files of layout overflow can be read, but not written; --to-layout 3 keeps all "
                 "variables, --to-layout 2 five of them and four flow parameters"
               : "files of layout 0 can be read, but not written; --to-layout 1 keeps the step "
                 "count and size";
  }
  if (!has_files_of(traits_of(written.layout), written.coding)) {
    return no_planar_files + std::string("; --to-dimensions 3 writes it in three");
  }
  return obstacle(options.values, written.layout);
}

Reals zeros(const RestartForm& form, std::int64_t points) {
  Reals values(form.coding.precision, points);
  values.visit([](auto span) { std::ranges::fill(span, 0); });
  return values;
}

/// Copies all arrays, one at a time.
void copy(RestartInput& input, const Conversion& conversion, const OutputFile& output) {
  const SolutionHeader& written = conversion.written;
  const RestartForm& form = written.form;
  const std::int32_t absent = absent_variable(traits_of(form.layout), form.coding);
  expect_arrays(written);
  SolutionWriter writer(output.temporary_path(), written);
  for (std::size_t b = 0; b < written.extents.i.size(); ++b) {
    writer.write(conversion.parameters(input.parameters(b)), [&](const FlowArray& array) {
      if (!conversion.holds(array)) return zeros(form, written.extents.points_of(b));
      Reals values = input.read(b, array);
      if (array == FlowArray{absent} && !is_zero(values)) {
        output.require_writable(planar_obstacle("a third momentum other than 0"));
      }
      return values;
    });
  }
  writer.close();
}

void convert_restart(const RestartOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.input});
  const Case found =
      find_case(options.grid_path, options.grid, options.input, options.stated, restart_usage);
  const RestartForm& read = found.restart.restart();
  const RestartForm written = applied_to(read, options.change);
  output.require_writable(obstacle_to_form(options, written));
  RestartInput input(options.input, found.restart, found.extents);
  output.require_writable(obstacle(input.header(), written));
  const Conversion conversion = conversion_of(input.header(), options.change, options.values);
  output.stream([&] { copy(input, conversion, output); });
  input.require_form();
  for (const std::string& text : conversion.notes()) note(options, text);
  note_what_is_lost(options, read, written);
  note_contradiction(options.output, written.coding);
  output.commit();
  const SolutionHeader& header = conversion.written;
  print_summary(options.output + ": " + counted(header.extents) + ", " +
                counted(header.most_variables(), "variable") + ", " + describe(header.form));
}

}  // namespace

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
  add_grid_options(command, options->grid);
  add_restart_options(command, options->stated);
  add_target_options(command, options->change, options->values);
  command.options.push_back(
      {"--stream", &options->stream,
       "Accepted for older scripts: one array is held at a time, with or without"});
  return command;
}

}  // namespace p3dgrid::tool
