#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "grid_file.hpp"
#include "input_files.hpp"
#include "library.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "primitive.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr integer tecplot_unit = 594;
constexpr integer largest_extent = 9999;  // a zone line has four digits for each

struct TecplotOptions {
  std::string grid_path;
  std::string restart_path;
  std::string output;
  StatedGridForm grid;
  StatedRestartForm restart;
  bool iblank = false;
  bool as_stored = false;
  double gamma = gamma_of_air;
};

constexpr Usage usage = {.command_line = "p3dgrid tecplot GRID RESTART OUT"};

/// Why a Tecplot file cannot hold the solution; empty if it can.
std::string obstacle(const TecplotOptions& options, const Restart& restart) {
  if (restart.variables() == solution_variables) return "";
  return "a Tecplot file has a place for the five variables of a solution, and " +
         options.restart_path + " holds " + counted(restart.variables(), "variable");
}

std::string obstacle(const TecplotOptions& options, const Grid& grid) {
  for (const auto* extents : {&grid.idim, &grid.jdim, &grid.kdim}) {
    const integer largest = std::ranges::max(extents->span());
    if (largest <= largest_extent) continue;
    return "its zone lines have four digits for each extent, and " + options.grid_path +
           " has one of " + std::to_string(largest);
  }
  return "";
}

/// In other layouts the meaning of the variables is not known.
bool can_be_converted(const TecplotOptions& options, const RestartForm& form) {
  return traits_of(form.layout).parameters > 0 && !options.as_stored;
}

void note_columns(const TecplotOptions& options, const RestartForm& form) {
  const std::string columns = options.output + ": U, V, W, P and RHO are ";
  if (can_be_converted(options, form)) {
    return print_note(columns + "the velocities, the pressure (gamma " + digits(options.gamma) +
                      ") and the density that follow from density, momentum and energy in " +
                      options.restart_path + "; --as-stored writes those as they are");
  }
  const bool known = traits_of(form.layout).parameters > 0;
  print_note(columns +
             (known ? "density, momentum in x, y and z, and energy" : "the five variables") +
             " of " + options.restart_path + " in the order of the file");
}

allocatable<double, 2> widened(const allocatable<float, 2>& values) {
  allocatable<double, 2> wide;
  require_memory(wide.allocate(values.extent(1), values.extent(2)));
  std::ranges::copy(values.span(), wide.span().begin());
  return wide;
}

/// Velocities, pressure and density of the points of a PLOT3D solution.
allocatable<double, 2> converted(const allocatable<float, 2>& flow, double gamma) {
  allocatable<double, 2> columns;
  require_memory(columns.allocate(solution_variables, flow.extent(2)));
  auto out = columns.span().begin();
  for (auto in = flow.span(); !in.empty(); in = in.subspan(solution_variables)) {
    const Primitive at = primitive_of(in.first(solution_variables), gamma);
    out = std::ranges::copy(std::array{at.u, at.v, at.w, at.pressure, at.density}, out).out;
  }
  return columns;
}

void write_tecplot(const TecplotOptions& options, const std::string& path, const Grid& grid,
                   const Restart& restart, const RestartForm& form) {
  const auto coordinates = widened(grid.xyz);
  const auto flow = can_be_converted(options, form) ? converted(restart.flow, options.gamma)
                                                    : widened(restart.flow);
  mod_p3dgrid::writetecplotfile_p3d(name_for(path), grid.blocks, coordinates, flow, grid.idim,
                                    grid.jdim, grid.kdim, grid.iblank, options.iblank);
  mod_p3dgrid::p3dcloseunit(tecplot_unit);
}

void export_tecplot(const TecplotOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.restart_path});
  const Case found =
      find_case(options.grid_path, options.grid, options.restart_path, options.restart, usage);
  const RestartForm& form = found.restart.restart();
  const Restart restart = read_restart(options.restart_path, found.restart, found.extents);
  output.require_writable(obstacle(options, restart));
  Grid grid = read_grid(options.grid_path, found.grid);
  output.require_writable(obstacle(options, grid));
  if (options.iblank && !grid.iblank.allocated()) allocate_blanking(grid);
  if (holds_doubles(found.grid.grid().coding) || holds_doubles(form.coding)) {
    print_note("values pass through single precision: " + options.output +
               " holds about 7 digits of each");
  }
  note_columns(options, form);
  output.write([&] { write_tecplot(options, output.temporary_path(), grid, restart, form); });
  output.commit();
  print_summary(options.output + ": " + counted(grid.blocks, "zone") + ", " +
                counted(grid.points(), "point") + ", Tecplot text");
}

}  // namespace

Command tecplot_command() {
  const auto options = std::make_shared<TecplotOptions>();
  Command command{
      .name = "tecplot",
      .meaning = "Write a grid with its flow solution as a Tecplot text file",
      .footer =
          "The columns U, V, W, P and RHO are velocities, pressure and density, which are worked "
          "out\n"
          "from a PLOT3D solution (layout 2). Of other layouts, and with --as-stored, they are the "
          "five\n"
          "variables in the order of the file, whatever these are.\n\n"
          "Examples:\n"
          "  p3dgrid tecplot grid.p3d flow.q flow.dat\n"
          "  p3dgrid tecplot grid.p3d flow.q flow.dat --iblank --gamma 1.3\n"
          "  p3dgrid tecplot grid.p3d flow.q flow.dat --as-stored",
      .arguments = {{"GRID", &options->grid_path, "Grid file to which the solution belongs"},
                    {"RESTART", &options->restart_path, "Restart file of five variables"},
                    {"OUT", &options->output, "Tecplot file to write; replaced whole or not at all",
                     Argument::Use::output}},
      .run = [options] { export_tecplot(*options); }};
  add_grid_options(command, options->grid);
  add_restart_options(command, options->restart);
  command.options.push_back(
      {"--iblank", &options->iblank, "Add the blanking values, those of the grid or else 1"});
  command.options.push_back(gamma_option(options->gamma, "the pressure"));
  command.options.push_back(
      {.name = "--as-stored",
       .target = &options->as_stored,
       .meaning = "Write the five variables of a PLOT3D solution in their order",
       .excludes = "--gamma"});
  return command;
}

}  // namespace p3dgrid::tool
