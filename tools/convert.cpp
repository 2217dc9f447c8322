#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "file_names.hpp"
#include "grid_file.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "progress.hpp"
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
  GridInput input(options.input, found);
  const Extents& extents = input.extents();
  const GridForm form = applied_to(found.grid(), options.change);
  if (!form.multiblock && extents.blocks() > 1) {
    output.require_writable(
        options.input + " holds " + counted(extents.blocks(), "block") +
        ", and a file without a block count (--to-multiblock no) holds only one");
  }
  if (is_planar(form.coding)) output.require_writable(planar_obstacle(extents));
  expect_values(form.coding, axes_of(form.coding) * extents.points(),
                form.iblank ? extents.points() : 0);
  output.stream([&] {
    GridWriter writer(output.temporary_path(), form, extents);
    for (std::size_t b = 0; b < extents.i.size(); ++b) {
      const Block block = input.read(b);
      if (is_planar(form.coding) && !is_zero(block.z)) {
        output.require_writable(planar_obstacle("z other than 0"));
      }
      writer.write(block);
    }
    writer.close();
  });
  input.require_form();
  if (rounds_text(found.grid().coding, options.change.coding, form.coding)) {
    print_note("coordinates are rounded to about 7 digits; --to-precision double keeps more");
  }
  note_contradiction(options.output, form.coding);
  output.commit();
  print_summary(options.output + ": " + counted(extents) + ", " + describe(form));
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
