#pragma once

#include <string>
#include <vector>

#include "p3dgrid/form.hpp"

/// The lines that report how the headers of a grid and of a restart file differ.
namespace p3dgrid {

[[nodiscard]] std::vector<std::string> report_of_counts(std::int32_t grid, std::int32_t restart);

/// @param block  number of the block, from 1
[[nodiscard]] std::vector<std::string> report_of_block(std::int32_t block, const BlockExtents& grid,
                                                       const BlockExtents& restart);

/// The last lines of a report.
[[nodiscard]] std::vector<std::string> end_of_report();

}  // namespace p3dgrid
