#include "restart_info.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <optional>
#include <vector>

#include "agreement.hpp"
#include "console.hpp"
#include "range.hpp"
#include "restart_file.hpp"
#include "restart_guess.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

const char* meaning_of(Layout layout) {
  switch (layout) {
    case Layout::talven:
      return "TALVEN restart";
    case Layout::solution:
      return "PLOT3D solution";
    case Layout::function:
      return "PLOT3D function";
    case Layout::bare:
      return "no header, one block";
    case Layout::single_block:
      return "time step, one block, triplets";
    case Layout::triplets:
      return "time step, triplets";
    case Layout::time_step:
      break;
  }
  return "time step";
}

/// "name  value", the values below each other.
void print_value(std::string name, const std::string& value) {
  constexpr std::size_t width = 24;
  name.resize(std::max(width, name.size() + 1), ' ');
  print_line(name + value);
}

void print_talven_header() {
  print_value("file version", std::to_string(mod_p3dgrid::fileversion));
  print_value("equation set", std::to_string(mod_p3dgrid::eqid));
  print_value("flow variables named", std::to_string(mod_p3dgrid::talnvar));
  print_value("time integration", std::to_string(mod_p3dgrid::itimeint));
  print_value("ibeta", std::to_string(mod_p3dgrid::ibeta));
}

void print_talven_parameters() {
  if (!talven_parameters_read()) return;
  print_value("sub-grid-scale model", std::to_string(mod_p3dgrid::isgsmodel));
  print_value("Reynolds number", digits(mod_p3dgrid::talre));
  print_value("Mach number", digits(mod_p3dgrid::talxm1));
  print_value("angle of attack", digits(mod_p3dgrid::talalfa));
  print_value("side-slip angle", digits(mod_p3dgrid::talbeta));
  print_value("ratio of specific heats", digits(mod_p3dgrid::talgam));
  print_value("s1", digits(mod_p3dgrid::tals1));
  print_value("Prandtl number", digits(mod_p3dgrid::talpr));
  print_value("turbulent Prandtl number", digits(mod_p3dgrid::talprt));
}

/// A header value with the digits that the file has of it.
std::string digits_in(const RestartForm& form, double value) {
  const bool rounded =
      form.encoding != Encoding::formatted && form.precision == Precision::single_precision;
  return rounded ? digits(static_cast<float>(value)) : digits(value);
}

void print_header_values(const RestartForm& form) {
  const Layout layout = form.layout;
  if (!holds_step(layout)) return;
  print_line("");
  if (layout == Layout::talven) print_talven_header();
  print_value("step count", std::to_string(mod_p3dgrid::nstep));
  print_value("step size", digits_in(form, mod_p3dgrid::dtau));
  if (layout == Layout::talven) print_talven_parameters();
}

void print_flow_parameters(const RestartForm& form, const std::vector<FlowParameters>& parameters) {
  Table table({"block", "Mach number", "angle of attack", "Reynolds number", "time"});
  for (std::size_t b = 0; b < parameters.size(); ++b) {
    const FlowParameters& block = parameters[b];
    table.add({std::to_string(b + 1), digits_in(form, block.mach), digits_in(form, block.alpha),
               digits_in(form, block.reynolds), digits_in(form, block.time)});
  }
  print_line("");
  table.print();
}

void print_extents(const Extents& extents, const std::vector<integer>& functions) {
  std::vector<std::string> header = {"block", "i", "j", "k", "points"};
  if (!functions.empty()) header.emplace_back("functions");
  Table table(header);
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    std::vector<std::string> row = {std::to_string(b + 1)};
    for (const integer extent : {extents.i[b], extents.j[b], extents.k[b]}) {
      row.push_back(std::to_string(extent));
    }
    row.push_back(std::to_string(extents.points_of(b)));
    if (!functions.empty()) row.push_back(std::to_string(functions[b]));
    table.add(row);
  }
  print_line("");
  table.print();
}

/// What is reported of one variable.
struct Summary {
  Range range;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;

  void add(float value) {
    if (std::isnan(value)) {
      ++nan;
    } else if (std::isinf(value)) {
      ++infinite;
    } else {
      range.include(value);
    }
  }
};

std::vector<Summary> summarize(const mod_p3dgrid::allocatable<float, 2>& values) {
  const auto rows = static_cast<std::size_t>(values.extent(1));
  std::vector<Summary> summaries(rows);
  const float* value = values.data();
  for (std::int64_t p = 0; p < values.extent(2); ++p) {
    for (std::size_t v = 0; v < rows; ++v) summaries[v].add(*value++);
  }
  return summaries;
}

std::string name_of_variable(Layout layout, std::size_t number) {
  static constexpr std::array names = {"density", "x-momentum", "y-momentum", "z-momentum",
                                       "energy"};
  if (!holds_parameters(layout) || number > names.size()) return "";
  return names.at(number - 1);
}

void add_range(Table& table, const std::string& label, const std::string& name,
               const Summary& summary) {
  const bool none = summary.range.empty();
  table.add({label, name, none ? "-" : digits(summary.range.low),
             none ? "-" : digits(summary.range.high), std::to_string(summary.nan),
             std::to_string(summary.infinite)});
}

void print_ranges(const Restart& restart, Layout layout) {
  Table table({"variable", "", "min", "max", "NaN", "infinite"});
  const auto variables = static_cast<std::size_t>(restart.variables());
  const std::vector<Summary> flow = summarize(restart.flow);
  for (std::size_t v = 0; v < variables; ++v) {
    add_range(table, std::to_string(v + 1), name_of_variable(layout, v + 1), flow[v]);
  }
  if (restart.triplets.allocated()) {
    const std::vector<Summary> triplets = summarize(restart.triplets);
    for (std::size_t c = 0; c < triplets.size(); ++c) {
      add_range(table, "triplet " + std::to_string(c + 1), "", triplets[c]);
    }
  }
  print_line("");
  table.print();
}

void print_contents(const std::string& path, const RestartForm& form, const std::string& held) {
  print_line("file    " + path);
  print_line("read as " + describe(form) + " (" + meaning_of(form.layout) + ")");
  print_line("holds   " + held);
}

void print_whole_file(const std::string& path, const RestartForm& form, const Restart& restart,
                      bool extents_are_grids) {
  const Extents& extents = restart.extents;
  print_contents(path, form,
                 counted(extents.blocks(), "block") + ", " + counted(extents.points(), "point") +
                     ", " + counted(restart.variables(), "variable") + " in the sections " +
                     describe(restart.sections));
  if (extents_are_grids) print_line("extents those of the grid; the file gives none");
  for (const Section& gap : restart.missing) {
    print_line("skips   the variables " + describe(Sections{gap}) + ", shown as 0");
  }
  print_header_values(form);
  if (holds_parameters(form.layout)) print_flow_parameters(form, restart.parameters);
  const bool functions = form.layout == Layout::function;
  print_extents(extents, functions ? std::vector<integer>(extents.i.size(), restart.variables())
                                   : std::vector<integer>());
  print_ranges(restart, form.layout);
}

/// All that can be said of a file without extents, or with variables of which the library reads no
/// more than the number.
void print_header_only(const std::string& path, const RestartForm& form,
                       const RestartHeader& header) {
  std::string held = counted(header.blocks, "block");
  if (form.layout != Layout::function) {
    const Sections sections = form.sections.value_or(Sections{{1, solution_variables}});
    held += ", " + counted(variables_in(sections), "variable") + " in the sections " +
            describe(sections) + " as stated";
  }
  print_contents(path, form, held);
  if (header.extents.i.empty()) {
    print_line("extents not in the file; --grid GRID shows them, and the ranges of its variables");
  }
  print_header_values(form);
  if (!header.extents.i.empty()) print_extents(header.extents, header.functions);
}

bool counts_differ(const RestartHeader& header) {
  const auto& counts = header.functions;
  return std::adjacent_find(counts.begin(), counts.end(), std::not_equal_to<>()) != counts.end();
}

}  // namespace

void print_restart_info(const std::string& path, const RestartForm& form) {
  require_regular_file(path);
  if (holds_extents(form.layout)) {
    if (form.layout != Layout::function || !counts_differ(header_with_advice(path, form))) {
      return print_whole_file(path, form, read_restart(path, form, std::nullopt), false);
    }
    print_note(path +
               ": its values are not shown; only files with as many functions in every "
               "block can be read whole");
  }
  print_header_only(path, form, header_with_advice(path, form));
}

void print_restart_info(const std::string& path, const RestartForm& form,
                        const std::string& grid_path, const GridForm& grid) {
  print_whole_file(path, form, read_restart_of_grid(grid_path, grid, path, form),
                   !holds_extents(form.layout));
}

}  // namespace p3dgrid
