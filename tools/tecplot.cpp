#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "first_line.hpp"
#include "grid_file.hpp"
#include "input_files.hpp"
#include "library.hpp"
#include "options.hpp"
#include "output_file.hpp"
#include "primitive.hpp"
#include "restart_file.hpp"
#include "table.hpp"
#include "variable_names.hpp"

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
  std::vector<std::string> names;
};

constexpr Usage tecplot_usage = {.command_line = "p3dgrid tecplot GRID RESTART OUT"};

/// Why a Tecplot file cannot hold the solution; empty if it can.
std::string obstacle(const TecplotOptions& options, const SolutionHeader& solution) {
  if (solution.most_variables() == solution_variables) return "";
  return "a Tecplot file has a place for the five variables of a solution, and " +
         options.restart_path + " holds " + counted(solution.most_variables(), "variable");
}

std::string obstacle(const TecplotOptions& options, const Extents& grid) {
  for (const auto* extents : {&grid.i, &grid.j, &grid.k}) {
    const std::int32_t largest = std::ranges::max(*extents);
    if (largest <= largest_extent) continue;
    return "its zone lines have four digits for each extent, and " + options.grid_path +
           " has one of " + std::to_string(largest);
  }
  return "";
}

/// In other layouts the meaning of the variables is not known.
bool can_be_converted(const TecplotOptions& options, const RestartForm& form) {
  return traits_of(form.layout).parameters > 0 && !options.as_stored && options.names.empty();
}

/// The names of the columns; none where those of the library stand.
std::vector<std::string> column_names(const TecplotOptions& options, const SolutionHeader& header) {
  if (options.names.empty() && traits_of(header.form.layout).parameters > 0) return {};
  std::vector<std::string> names = variable_names(options.restart_path, header, options.names);
  if (names.front().empty()) return {};
  return names;
}

std::string variables_line(const std::vector<std::string>& names, bool iblank) {
  std::string line = R"( VARIABLES = "X", "Y", "Z")";
  for (const std::string& name : names) line += ", \"" + name + '"';
  return line + (iblank ? R"(,"IBLANK")" : "");
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

/// Coordinates and flow of all points, as the library's operation takes them.
struct Points {
  allocatable<double, 2> coordinates;
  allocatable<double, 2> flow;
  allocatable<integer, 1> iblank;

  Points(std::int64_t points, bool blanking) {
    require_memory(coordinates.allocate(3, points));
    require_memory(flow.allocate(solution_variables, points));
    if (blanking) require_memory(iblank.allocate(points));
  }
};

/// Copies the values to a row, from column `first` on.
void copy_row(const Reals& values, allocatable<double, 2>& to, std::int64_t row,
              std::int64_t first) {
  values.visit([&](auto span) {
    for (const auto value : span) to(row, first++) = static_cast<double>(value);
  });
}

/// Reads grid and flow block by block.
void read_points(GridInput& grid, RestartInput& restart, Points& points) {
  std::int64_t first = 1;
  for (std::size_t b = 0; b < grid.extents().i.size(); ++b) {
    const Block block = grid.read(b);
    copy_row(block.x, points.coordinates, 1, first);
    copy_row(block.y, points.coordinates, 2, first);
    copy_row(block.z, points.coordinates, 3, first);
    for (std::int32_t v = 1; v <= solution_variables; ++v) {
      copy_row(restart.read(b, {v}), points.flow, v, first);
    }
    const std::int64_t count = block.extents.points();
    for (std::int64_t p = 0; points.iblank.allocated() && p < count; ++p) {
      const bool known = !block.iblank.empty();
      points.iblank(first + p) = known ? block.iblank[static_cast<std::size_t>(p)] : 1;
    }
    first += count;
  }
}

/// Replaces density, momentum and energy by velocities, pressure and density.
void convert(allocatable<double, 2>& flow, double gamma) {
  for (auto at = flow.span(); !at.empty(); at = at.subspan(solution_variables)) {
    const Primitive point = primitive_of<double>(at.first(solution_variables), gamma);
    std::ranges::copy(std::array{point.u, point.v, point.w, point.pressure, point.density},
                      at.begin());
  }
}

void export_tecplot(const TecplotOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.restart_path});
  const Case found = find_case(options.grid_path, options.grid, options.restart_path,
                               options.restart, tecplot_usage);
  const RestartForm& form = found.restart.restart();
  const Extents& extents = found.extents;
  RestartInput restart(options.restart_path, found.restart, extents);
  output.require_writable(obstacle(options, restart.header()));
  const std::vector<std::string> names = column_names(options, restart.header());
  GridInput grid(options.grid_path, found.grid);
  output.require_writable(obstacle(options, extents));
  Points points =
      with_failures(options.restart_path, [&] { return Points(extents.points(), options.iblank); });
  read_points(grid, restart, points);
  grid.require_form();
  restart.require_form();
  if (can_be_converted(options, form)) convert(points.flow, options.gamma);
  if (names.empty()) note_columns(options, form);
  output.write([&] {
    mod_p3dgrid::writetecplotfile_p3d(name_for(output.temporary_path()), extents.blocks(),
                                      points.coordinates, points.flow, extents.i, extents.j,
                                      extents.k, points.iblank, options.iblank);
    mod_p3dgrid::p3dcloseunit(tecplot_unit);
    if (!names.empty()) {
      replace_first_line(output.temporary_path(), variables_line(names, options.iblank));
    }
  });
  output.commit();
  print_summary(options.output + ": " + counted(extents.blocks(), "zone") + ", " +
                counted(extents.points(), "point") + ", Tecplot text");
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
          "  p3dgrid tecplot grid.p3d flow.q flow.dat --as-stored\n"
          "  p3dgrid tecplot grid.p3d flow.q flow.dat --names rho,rhou,rhov,rhow,e",
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
  command.options.push_back(names_option(options->names));
  command.options.back().excludes = "--gamma";
  return command;
}

}  // namespace p3dgrid::tool
