#include "restart_info.hpp"

#include <algorithm>
#include <optional>
#include <vector>

#include "console.hpp"
#include "header_values.hpp"
#include "table.hpp"
#include "variable_report.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

/// "name  value", the values below each other.
void print_value(std::string name, const std::string& value) {
  constexpr std::size_t width = 24;
  name.resize(std::max(width, name.size() + 1), ' ');
  print_line(name + value);
}

void print_header_values(const RestartForm& form) {
  const std::vector<HeaderValue> values = header_values(form);
  if (!values.empty()) print_line("");
  for (const HeaderValue& value : values) print_value(value.label, value.text(form));
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

void print_contents(const std::string& path, const Found& found, const std::string& held) {
  const RestartForm& form = found.restart();
  print_line("file    " + path);
  print_line("read as " + describe(form) + " (" + traits_of(form.layout).meaning + ")");
  print_line("because " + found.reason);
  print_line("holds   " + held);
}

std::vector<integer> functions_of(const RestartReport& report) {
  if (report.found.restart().layout != Layout::function) return {};
  if (!report.body) return report.header.functions;
  return std::vector<integer>(report.body->extents.i.size(), report.body->variables());
}

std::string contents_of(const RestartReport& report) {
  std::string text = counted(report.header.blocks, "block");
  if (report.body) text += ", " + counted(report.body->extents.points(), "point");
  const Sections* sections = report.sections();
  if (sections != nullptr && (report.body || report.header.functions.empty())) {
    text += ", " + counted(variables_in(*sections), "variable") + " in the sections " +
            describe(*sections) + (report.body ? "" : " as stated");
  }
  return text;
}

}  // namespace

void print_restart_info(const std::string& path, const RestartReport& report) {
  const RestartForm& form = report.found.restart();
  print_contents(path, report.found, contents_of(report));
  if (!report.body && report.header.extents.i.empty()) {
    print_line("extents not in the file; --grid GRID shows them, and the ranges of its variables");
  } else if (!report.found.reading.own_extents) {
    print_line("extents those of the grid; the file gives none");
  }
  if (report.body) {
    for (const Section& gap : report.body->missing) {
      print_line("skips   the variables " + describe(Sections{gap}) + ", shown as 0");
    }
  }
  print_header_values(form);
  if (report.body && traits_of(form.layout).parameters) {
    print_flow_parameters(form, report.body->parameters);
  }
  const Extents& extents = report.body ? report.body->extents : report.header.extents;
  if (!extents.i.empty()) print_extents(extents, functions_of(report));
  if (report.body) print_variables(report_on_variables(*report.body, form.layout), "variable");
}

}  // namespace p3dgrid::tool
