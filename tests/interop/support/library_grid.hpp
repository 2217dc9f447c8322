#pragma once

#include <optional>
#include <string>

#include "support/grid.hpp"
#include "support/grid_layout.hpp"

namespace interop {

/// Reads a grid file with the library; nothing if the library reports a failed read.
[[nodiscard]] std::optional<Grid<float>> read_with_library(const std::string& path,
                                                           const GridLayout& layout);

/// Writes a grid file with the library.
void write_with_library(const std::string& path, const GridLayout& layout, const Grid<float>& grid);

/// What the header of a grid file says.
struct GridTotals {
  int blocks;
  int points;
};

/// Reads the header of a grid file with the library; nothing if the library reports a failed read.
[[nodiscard]] std::optional<GridTotals> read_totals_with_library(const std::string& path,
                                                                 const GridLayout& layout);

}  // namespace interop
