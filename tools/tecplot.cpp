#include <algorithm>
#include <array>
#include <memory>
#include <p3dgrid/tecplot.hpp>
#include <string>
#include <utility>
#include <vector>

#include "command.hpp"
#include "console.hpp"
#include "failure.hpp"
#include "options.hpp"
#include "parts.hpp"
#include "primitive.hpp"
#include "table.hpp"
#include "variable_names.hpp"

namespace p3dgrid::tool {
namespace {

struct TecplotOptions {
  std::string grid_path;
  std::string restart_path;
  std::string output;
  StatedForms stated;
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
    if (largest <= TecplotWriter::largest_extent) continue;
    return "its zone lines have four digits for each extent, and " + options.grid_path +
           " has one of " + std::to_string(largest);
  }
  return "";
}

/// In other layouts the meaning of the variables is not known.
bool can_be_converted(const TecplotOptions& options, const RestartForm& form) {
  return traits_of(form.layout).parameters > 0 && !options.as_stored && options.names.empty();
}

/// The names of the variables; none where the usual ones of a flow stand.
std::vector<std::string> column_names(const TecplotOptions& options, const SolutionHeader& header) {
  if (options.names.empty() && traits_of(header.form.layout).parameters > 0) return {};
  std::vector<std::string> names = variable_names(options.restart_path, header, options.names);
  if (names.front().empty()) return {};
  return names;
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

/// Replaces density, momentum and energy by velocities, pressure and density.
void convert(std::vector<Reals>& flow, double gamma) {
  std::array<Array<double>, solution_variables> columns;
  for (std::size_t v = 0; v < columns.size(); ++v) {
    flow[v].visit([&](auto values) { columns[v].assign(values.begin(), values.end()); });
    flow[v] = Reals();
  }
  auto& [u, v, w, pressure, density] = columns;
  for (std::size_t n = 0; n < density.size(); ++n) {
    const std::array conserved = {u[n], v[n], w[n], pressure[n], density[n]};
    const Primitive point = primitive_of<double>(conserved, gamma);
    u[n] = point.u;
    v[n] = point.v;
    w[n] = point.w;
    pressure[n] = point.pressure;
    density[n] = point.density;
  }
  std::ranges::transform(columns, flow.begin(),
                         [](Array<double>& column) { return Reals(std::move(column)); });
}

/// The variables of a block as they are written.
std::vector<Reals> flow_of(RestartInput& restart, std::size_t block,
                           const TecplotOptions& options) {
  std::vector<Reals> flow;
  for (std::int32_t v = 1; v <= solution_variables; ++v) flow.push_back(restart.read(block, {v}));
  if (can_be_converted(options, restart.header().form)) convert(flow, options.gamma);
  return flow;
}

void export_tecplot(const TecplotOptions& options) {
  OutputFile output(options.output, {options.grid_path, options.restart_path});
  const CaseInput input(options.grid_path, options.restart_path, options.stated, tecplot_usage);
  const Extents& extents = input.extents();
  RestartInput& restart = input.restart();
  output.require_writable(obstacle(options, restart.header()));
  std::vector<std::string> names = column_names(options, restart.header());
  const bool usual = names.empty();
  if (usual) names.assign(TecplotWriter::flow_names.begin(), TecplotWriter::flow_names.end());
  GridInput& grid = input.grid();
  output.require_writable(obstacle(options, extents));
  output.stream([&] {
    TecplotWriter writer(output.temporary_path(), names, options.iblank);
    for (std::size_t b = 0; b < extents.i.size(); ++b) {
      const Block block = grid.read(b);
      writer.write(
          block, with_failures(options.restart_path, [&] { return flow_of(restart, b, options); }));
    }
    writer.close();
  });
  grid.require_form();
  restart.require_form();
  if (usual) note_columns(options, input.restart_form());
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
  add_input_options(command, options->stated);
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
