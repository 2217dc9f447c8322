#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "file_names.hpp"
#include "grid_file.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct ConvertOptions {
  std::string input;
  std::string output;
  StatedGridForm stated;
  StatedGridForm change;
};

void convert(const ConvertOptions& options) {
  OutputFile output(options.output, {options.input});
  const Found found = find_grid(options.input, options.stated,
                                "'p3dgrid restart GRID " + options.input + " OUT' converts it");
  Grid grid = read_grid(options.input, found);
  const GridForm form = applied_to(found.grid(), options.change);
  if (!form.multiblock && grid.blocks > 1) {
    output.require_writable(
        options.input + " holds " + counted(grid.blocks, "block") +
        ", and a file without a block count (--to-multiblock no) holds only one");
  }
  if (form.iblank && !grid.iblank.allocated()) allocate_blanking(grid);
  if (loses_digits(found.grid().coding, form.coding)) {
    print_note("coordinates pass through single precision: " + options.output +
               " holds about 7 digits of each, whatever its own precision");
  }
  note_contradiction(options.output, form.coding);
  output.write([&] { write_grid(output.temporary_path(), form, grid); });
  output.commit();
  print_summary(options.output + ": " + counted(extents_of(grid)) + ", " + describe(form));
}

}  // namespace

Command convert_command() {
  const auto options = std::make_shared<ConvertOptions>();
  Command command{
      .name = "convert",
      .meaning = "Write a grid in another encoding or precision",
      .footer =
          "Coordinates pass through single precision, also from double to double.\n\n"
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
