#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "cylinder.hpp"
#include "failure.hpp"
#include "file_input.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct SampleFile {
  std::string name;
  std::string contents;
  std::function<void(const std::string& path)> write;
};

SampleFile grid_file(const char* name, const Grid& grid, const GridForm& form = {}) {
  return {name, counted(grid.extents()) + ", " + describe(form),
          [&grid, form](const std::string& path) { write_grid(path, grid, stated_as(form)); }};
}

SampleFile restart_file(const char* name, const Solution& restart, Layout layout,
                        Encoding encoding = Encoding::unformatted) {
  const RestartForm form{.layout = layout, .coding = {.encoding = encoding}};
  return {name,
          counted(restart.extents()) + ", " + counted(restart.variables(), "variable") + ", " +
              describe(form),
          [&restart, form](const std::string& path) {
            write_solution(path, restart, stated_as(form));
          }};
}

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
  if (error) throw Unusable(folder.string() + ": " + error.message());
}

void write_sample(const SampleOptions& options) {
  const Grid grid = cylinder_grid();
  const Solution solution = cylinder_solution(grid);
  const Solution functions = cylinder_functions(grid);
  const Grid upper = {.blocks = {grid.blocks.front()}};  // for layouts that hold one block
  const Solution upper_solution = cylinder_solution(upper);
  const std::vector<SampleFile> files = {
      grid_file("grid.p3d", grid), grid_file("grid-iblank.p3d", grid, {.iblank = true}),
      grid_file("grid.txt", grid, {.coding = {.encoding = Encoding::formatted}}),
      restart_file("flow.q", solution, Layout::solution),
      restart_file("flow-1.rst", solution, Layout::time_step),
      // Text, because the triplets of layout 100 are not read from other single-precision files.
      restart_file("flow-100.txt", solution, Layout::triplets, Encoding::formatted),
      restart_file("flow.f", functions, Layout::function), grid_file("upper.p3d", upper),
      restart_file("upper-101.rst", upper_solution, Layout::single_block),
      restart_file("upper-102.rst", upper_solution, Layout::bare)};
  const std::filesystem::path folder = options.folder;
  create_folder(folder);
  for (const SampleFile& file : files) {
    const std::filesystem::path path = folder / file.name;
    std::error_code error;
    const auto type = std::filesystem::symlink_status(path, error).type();
    // The folder may hold a grid of the user's with the same name.
    if (options.replace || type == std::filesystem::file_type::not_found) continue;
    throw Unusable(path.string() + ": is there already; --replace writes over it");
  }
  for (const SampleFile& file : files) {
    const std::string path = (folder / file.name).string();
    OutputFile output(path);
    file.write(output.temporary_path());
    output.commit();
    print_line(path + ": " + file.contents);
  }
}

}  // namespace

Command sample_command() {
  const auto options = std::make_shared<SampleOptions>();
  return {
      .name = "sample",
      .meaning =
          "Write a small case to try everything on: a cylinder in cross flow, grid and solutions",
      .footer = "Example:\n  p3dgrid sample demo",
      .arguments = {{"DIR", &options->folder, "Folder for the files; made if it is not there",
                     Argument::Use::folder}},
      .options = {{"--replace", &options->replace, "Write over files of an earlier sample"}},
      .run = [options] { write_sample(*options); }};
}

}  // namespace p3dgrid::tool
