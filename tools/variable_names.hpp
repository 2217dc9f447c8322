#pragma once

#include <p3dgrid/solution.hpp>
#include <string>
#include <vector>

#include "command.hpp"

namespace p3dgrid::tool {

/// The names of the variables of a restart file, in file order; empty where none is known. These
/// are the stated ones, those of the file with the ending .nam beside a function file, or those of
/// a PLOT3D solution. Throws a Failure if a different number is stated.
/// @param stated  empty for none
[[nodiscard]] std::vector<std::string> variable_names(const std::string& path,
                                                      const SolutionHeader& header,
                                                      const std::vector<std::string>& stated);

/// The option that states the names.
[[nodiscard]] Option names_option(std::vector<std::string>& names);

}  // namespace p3dgrid::tool
