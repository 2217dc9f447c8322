#include <array>
#include <filesystem>
#include <memory>
#include <string>

#include "commands.hpp"
#include "console.hpp"
#include "cylinder.hpp"
#include "failure.hpp"
#include "grid_file.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

struct SampleFile {
  const char* name;
  GridForm form;
};

const std::array sample_files = {
    SampleFile{"grid.p3d", GridForm{}},
    SampleFile{"grid-iblank.p3d", GridForm{.iblank = true}},
    SampleFile{"grid.txt", GridForm{.encoding = Encoding::formatted}},
};

struct SampleOptions {
  std::string folder;
  bool replace = false;
};

void create_folder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error && !std::filesystem::is_directory(folder, error)) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (error) throw Failure(ExitStatus::unusable, folder.string() + ": " + error.message());
}

// The folder may be one in which the user keeps a grid of the same name.
void require_nothing_there(const std::filesystem::path& folder) {
  for (const SampleFile& file : sample_files) {
    const auto path = folder / file.name;
    std::error_code error;
    if (std::filesystem::symlink_status(path, error).type() ==
        std::filesystem::file_type::not_found)
      continue;
    throw Failure(ExitStatus::unusable,
                  path.string() + ": is there already; --replace writes over it");
  }
}

void write_sample(const SampleOptions& options) {
  const std::filesystem::path folder = options.folder;
  create_folder(folder);
  if (!options.replace) require_nothing_there(folder);
  const Grid grid = cylinder_grid();
  for (const SampleFile& file : sample_files) {
    const std::string path = (folder / file.name).string();
    OutputFile output(path);
    write_grid(output.temporary_path(), file.form, grid);
    output.commit();
    print_line(path + ": " + counted(grid.blocks, "block") + ", " +
               counted(grid.points(), "point") + ", " + describe(file.form));
  }
}

}  // namespace

Command add_sample(CLI::App& program) {
  CLI::App* line = program.add_subcommand(
      "sample", "Write a small multi-block case, a cylinder in cross flow, to try everything on");
  const auto options = std::make_shared<SampleOptions>();
  add_path(*line, "DIR", options->folder, "Folder for the files; made if it is not there");
  line->add_flag("--replace", options->replace, "Write over files of an earlier sample");
  line->footer("Example:\n  p3dgrid sample demo");
  return {line, [options] { write_sample(*options); }};
}

}  // namespace p3dgrid
