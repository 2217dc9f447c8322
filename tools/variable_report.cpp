#include "variable_report.hpp"

#include <array>

#include "console.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

std::string name_of_variable(Layout layout, std::size_t number) {
  static constexpr std::array names = {"density", "x-momentum", "y-momentum", "z-momentum",
                                       "energy"};
  if (traits_of(layout).parameters == 0 || number > names.size()) return "";
  return names.at(number - 1);
}

std::string value_text(const std::optional<Extreme>& extreme) {
  return extreme ? digits(extreme->value) : "-";
}

void append_place(std::vector<std::string>& row, const std::optional<Extreme>& extreme) {
  if (!extreme) {
    row.insert(row.end(), 4, "-");
    return;
  }
  const Place& place = extreme->place;
  for (const auto number : {place.block, place.i, place.j, place.k}) {
    row.push_back(std::to_string(number));
  }
}

}  // namespace

std::vector<VariableReport> report_on_coordinates(const mod_p3dgrid::allocatable<float, 2>& xyz,
                                                  const Extents& extents) {
  static constexpr std::array names = {"x", "y", "z"};
  std::vector<VariableReport> reports;
  for (Survey& one : survey(xyz, extents)) {
    reports.push_back({names.at(reports.size()), "", one});
  }
  return reports;
}

std::vector<VariableReport> report_on_variables(const Restart& restart, Layout layout) {
  std::vector<VariableReport> reports;
  const std::vector<Survey> flow = survey(restart.flow, restart.extents);
  for (std::size_t v = 0; v < static_cast<std::size_t>(restart.variables()); ++v) {
    reports.push_back({std::to_string(v + 1), name_of_variable(layout, v + 1), flow[v]});
  }
  if (!restart.triplets.allocated()) return reports;
  const std::vector<Survey> triplets = survey(restart.triplets, restart.extents);
  for (std::size_t c = 0; c < triplets.size(); ++c) {
    reports.push_back({"triplet " + std::to_string(c + 1), "", triplets[c]});
  }
  return reports;
}

void print_variables(const std::vector<VariableReport>& reports, const std::string& what) {
  Table ranges({what, "", "min", "max", "NaN", "infinite"});
  Table places({what, "min in block", "i", "j", "k", "max in block", "i", "j", "k"});
  for (const VariableReport& report : reports) {
    const Survey& survey = report.survey;
    ranges.add({report.label, report.name, value_text(survey.low), value_text(survey.high),
                std::to_string(survey.nan), std::to_string(survey.infinite)});
    std::vector<std::string> row = {report.label};
    append_place(row, survey.low);
    append_place(row, survey.high);
    places.add(row);
  }
  print_line("");
  ranges.print();
  print_line("");
  places.print();
}

}  // namespace p3dgrid::tool
