#include <algorithm>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "input_files.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "table.hpp"
#include "variable_names.hpp"
#include "vtk_file.hpp"

namespace p3dgrid::tool {
namespace {

struct VtkOptions {
  std::string grid_path;
  std::string restart_path;
  std::string output;
  StatedForms stated;
  std::vector<std::string> names;
};

constexpr Usage vtk_usage = {.command_line = "p3dgrid vtk GRID RESTART OUT.vtm",
                             .grid_alone = "'p3dgrid vtk GRID OUT.vtm' writes it alone"};

/// VTK's marks of points that are blanked.
VtkArray ghosts_of(const Block& block) {
  constexpr std::uint8_t hidden = 2;
  return {.name = "vtkGhostType",
          .type = "UInt8",
          .bytes = block.extents.points(),
          .write = [&block](const auto& put) {
            std::vector<std::uint8_t> marks(block.iblank.size());
            std::ranges::transform(block.iblank, marks.begin(), [](std::int32_t value) {
              return value == 0 ? hidden : std::uint8_t{0};
            });
            put(marks.data(), marks.size());
          }};
}

/// The coordinates, those of each point adjacent, in pieces.
template <class Real, class Put>
void put_points(const Block& block, const Put& put) {
  constexpr std::size_t piece = 4096;
  const auto x = block.x.span<Real>();
  const auto y = block.y.span<Real>();
  const auto z = block.z.span<Real>();
  std::vector<Real> points(3 * std::min(piece, x.size()));
  for (std::size_t first = 0; first < x.size(); first += piece) {
    const std::size_t count = std::min(piece, x.size() - first);
    for (std::size_t p = 0; p < count; ++p) {
      points[3 * p] = x[first + p];
      points[3 * p + 1] = y[first + p];
      points[3 * p + 2] = z[first + p];
    }
    put(points.data(), 3 * count * sizeof(Real));
  }
}

VtkArray points_of(const Block& block) {
  VtkArray array = vtk_array("Points", block.x.precision(), 3, block.extents.points());
  array.write = [&block](const auto& put) {
    block.x.visit([&]<class Real>(std::span<const Real>) { put_points<Real>(block, put); });
  };
  return array;
}

/// The name of an array, its number if it has none.
std::string name_of_array(const FlowArray& array, const std::vector<std::string>& names) {
  if (array.triplet) return "triplet " + std::to_string(array.number);
  const std::string& name = names[static_cast<std::size_t>(array.number) - 1];
  return name.empty() ? "variable " + std::to_string(array.number) : name;
}

/// Adds the arrays of a block of a solution, each read when it is written.
void add_flow(RestartInput& input, std::size_t block, const std::vector<std::string>& names,
              std::vector<VtkArray>& arrays) {
  const SolutionHeader& header = input.header();
  const Precision precision = precision_in_memory(header.form.coding);
  std::vector<FlowArray> numbers;
  for (std::int32_t n = 1; header.triplets && n <= triplet; ++n) numbers.push_back({n, true});
  for (std::int32_t n = 1; n <= header.variables[block]; ++n) {
    if (holds(header, {n})) numbers.push_back({n});
  }
  for (const FlowArray& number : numbers) {
    VtkArray& array = arrays.emplace_back(
        vtk_array(name_of_array(number, names), precision, 1, header.extents.points_of(block)));
    array.write = [&input, block, number](const auto& put) {
      input.read(block, number).visit([&](auto values) {
        put(values.data(), values.size_bytes());
      });
    };
  }
}

/// @param names  of the variables
void write_block(const CaseInput& input, const std::vector<std::string>& names, std::size_t number,
                 const std::string& path) {
  const Block block = input.grid().read(number);
  std::vector<VtkArray> arrays;
  if (!block.iblank.empty()) arrays.push_back(ghosts_of(block));
  if (!names.empty()) add_flow(input.restart(), number, names, arrays);
  write_vts(path, block.extents, arrays, points_of(block));
}

void write_vtk(const VtkOptions& options) {
  if (!options.output.ends_with(".vtm")) {
    throw Unusable(options.output + ": the list of blocks, which comes last, must end in .vtm");
  }
  const bool with_flow = !options.restart_path.empty();
  const std::string idle = options.names.empty() ? options.stated.restart_option : "--names";
  if (!with_flow && !idle.empty()) {
    throw Unusable(idle +
                   " applies to a restart file, and none is given: " + vtk_usage.command_line);
  }
  const std::vector<std::string> paths = {options.grid_path, options.restart_path};
  OutputFile list(options.output, paths);
  const CaseInput input(options.grid_path, options.restart_path, options.stated, vtk_usage);
  std::vector<std::string> names;
  if (with_flow)
    names = variable_names(options.restart_path, input.restart().header(), options.names);
  const Extents& extents = input.extents();
  const std::string block_path = options.output.substr(0, options.output.size() - 1) + "s";
  std::deque<OutputFile> files;
  std::vector<std::string> file_names;  // relative to the list
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    files.emplace_back(numbered_path(block_path, b + 1, extents.i.size()), paths);
    file_names.push_back(std::filesystem::path(files.back().path()).filename().string());
  }
  for (std::size_t b = 0; b < files.size(); ++b) {
    files[b].stream([&] { write_block(input, names, b, files[b].temporary_path()); });
  }
  input.grid().require_form();
  if (with_flow) input.restart().require_form();
  list.stream([&] { write_vtm(list.temporary_path(), file_names); });
  for (OutputFile& file : files) file.commit();
  list.commit();
  print_summary(
      options.output + ": " + counted(extents) + ", in " + counted(std::ssize(files), "file") +
      (with_flow ? ", " + counted(input.restart().header().most_variables(), "variable") : ""));
}

}  // namespace

Command vtk_command() {
  const auto options = std::make_shared<VtkOptions>();
  Command command{
      .name = "vtk",
      .meaning = "Write a grid, and its solution, as VTK files, for example for ParaView",
      .footer =
          "The blocks are written beside OUT.vtm: OUT-1.vts, OUT-2.vts.\n\n"
          "Examples:\n"
          "  p3dgrid vtk grid.p3d grid.vtm\n"
          "  p3dgrid vtk grid.p3d flow.q flow.vtm",
      .arguments = {{"GRID", &options->grid_path, "Grid file"},
                    {"RESTART", &options->restart_path, "Restart file with the point data",
                     Argument::Use::input, Argument::Presence::optional},
                    {"OUT.vtm", &options->output,
                     "List of blocks to write; all files are replaced whole or not at all",
                     Argument::Use::output, Argument::Presence::last}},
      .run = [options] { write_vtk(*options); }};
  add_input_options(command, options->stated);
  command.options.push_back(names_option(options->names));
  return command;
}

}  // namespace p3dgrid::tool
