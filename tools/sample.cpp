#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "cylinder.hpp"
#include "cylinder_flow.hpp"
#include "failure.hpp"
#include "grid_file.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

struct GridFile {
  const char* name;
  GridForm form;
};

struct RestartFile {
  const char* name;
  RestartForm form;
};

const std::array grid_files = {
    GridFile{"grid.p3d", {}},
    GridFile{"grid-iblank.p3d", {.iblank = true}},
    GridFile{"grid.txt", {.coding = {.encoding = Encoding::formatted}}},
};

// Text, because layout 100 is read without its triplets from other files.
const std::array solution_files = {
    RestartFile{"flow.q", {.layout = Layout::solution}},
    RestartFile{"flow-1.rst", {.layout = Layout::time_step}},
    RestartFile{"flow-100.txt",
                {.layout = Layout::triplets, .coding = {.encoding = Encoding::formatted}}},
};

const RestartFile function_file{"flow.f", {.layout = Layout::function}};

// Layouts that hold one block.
const GridFile upper_grid_file{"upper.p3d", {}};
const std::array upper_solution_files = {
    RestartFile{"upper-101.rst", {.layout = Layout::single_block}},
    RestartFile{"upper-102.rst", {.layout = Layout::bare}},
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

std::vector<const char*> names() {
  std::vector<const char*> all;
  for (const GridFile& file : grid_files) all.push_back(file.name);
  for (const RestartFile& file : solution_files) all.push_back(file.name);
  all.push_back(function_file.name);
  all.push_back(upper_grid_file.name);
  for (const RestartFile& file : upper_solution_files) all.push_back(file.name);
  return all;
}

// The folder may be one in which the user keeps a grid of the same name.
void require_nothing_there(const std::filesystem::path& folder) {
  for (const char* name : names()) {
    const auto path = folder / name;
    std::error_code error;
    if (std::filesystem::symlink_status(path, error).type() ==
        std::filesystem::file_type::not_found)
      continue;
    throw Failure(ExitStatus::unusable,
                  path.string() + ": is there already; --replace writes over it");
  }
}

void write_file(const std::filesystem::path& folder, const GridFile& file, const Grid& grid) {
  const std::string path = (folder / file.name).string();
  OutputFile output(path);
  write_grid(output.temporary_path(), file.form, grid);
  output.commit();
  print_line(path + ": " + counted(grid.blocks, "block") + ", " + counted(grid.points(), "point") +
             ", " + describe(file.form));
}

void write_file(const std::filesystem::path& folder, const RestartFile& file,
                const Restart& restart) {
  const std::string path = (folder / file.name).string();
  OutputFile output(path);
  write_restart(output.temporary_path(), file.form, restart);
  output.commit();
  print_line(path + ": " + counted(restart.extents.blocks(), "block") + ", " +
             counted(restart.extents.points(), "point") + ", " +
             counted(restart.variables(), "variable") + ", " + describe(file.form));
}

void write_sample(const SampleOptions& options) {
  const std::filesystem::path folder = options.folder;
  create_folder(folder);
  if (!options.replace) require_nothing_there(folder);
  const Grid grid = cylinder_grid();
  for (const GridFile& file : grid_files) write_file(folder, file, grid);
  const Restart solution = cylinder_solution(grid);
  for (const RestartFile& file : solution_files) write_file(folder, file, solution);
  write_file(folder, function_file, cylinder_functions(grid));

  const Grid upper = first_block(grid);
  write_file(folder, upper_grid_file, upper);
  const Restart upper_solution = cylinder_solution(upper);
  for (const RestartFile& file : upper_solution_files) write_file(folder, file, upper_solution);
}

}  // namespace

Command sample_command() {
  const auto options = std::make_shared<SampleOptions>();
  return {
      .name = "sample",
      .meaning =
          "Write a small case to try everything on: a cylinder in cross flow, grid and solutions",
      .footer = "Example:\n  p3dgrid sample demo",
      .arguments = {{"DIR", &options->folder, "Folder for the files; made if it is not there"}},
      .options = {{"--replace", &options->replace, "Write over files of an earlier sample"}},
      .run = [options] { write_sample(*options); }};
}

}  // namespace p3dgrid::tool
