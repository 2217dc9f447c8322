#pragma once

#include <string>
#include <vector>

#include "restart_file.hpp"
#include "survey.hpp"

namespace p3dgrid::tool {

/// What is reported of one variable, and what it is called.
struct VariableReport {
  std::string label;  ///< "1", "triplet 1", "x"
  std::string name;   ///< "density"; empty where nothing says what it is
  Survey survey;
};

[[nodiscard]] std::vector<VariableReport> report_on_coordinates(
    const mod_p3dgrid::allocatable<float, 2>& xyz, const Extents& extents);

/// The flow variables, then the triplets if there are some.
[[nodiscard]] std::vector<VariableReport> report_on_variables(const Restart& restart,
                                                              Layout layout);

/// Two tables: ranges with NaN and infinity counts, and the points where the ends of the ranges
/// are.
void print_variables(const std::vector<VariableReport>& reports, const std::string& what);

}  // namespace p3dgrid::tool
