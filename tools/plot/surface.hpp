#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <p3dgrid/grid.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool::plot {

using Vector = std::array<double, 3>;

/// The points of a block in which one of the three indices has one value.
struct GridPlane {
  std::size_t direction = 2;  ///< 0 for i, 1 for j, 2 for k
  std::int32_t index = 1;     ///< from 1; 0 for the last
};

/// Parses a positive number; 0 if the text is something else.
[[nodiscard]] std::int32_t number_in(std::string_view text);

/// Parses "k=1" or "j=last".
[[nodiscard]] std::optional<GridPlane> plane_in(std::string_view text);

/// The text that `plane_in` parses.
[[nodiscard]] std::string describe(const GridPlane& plane);

/// A sheet of points in rows and columns, cut out of a block. A block that is a line or a single
/// point makes one row.
struct Surface {
  std::size_t block = 0;  ///< from 0
  std::size_t columns = 0;
  std::size_t rows = 0;
  // Indices among the points of its block.
  std::int64_t first = 0;
  std::int64_t column_step = 0;
  std::int64_t row_step = 0;
  // Per point, row after row.
  std::vector<std::array<float, 3>> points = {};
  std::vector<char> absent = {};    ///< blanked or not finite
  bool has_invalid_points = false;  ///< points that are not blanked and not finite
  std::vector<float> values = {};   ///< shown by colour; empty for a mesh

  [[nodiscard]] Vector place(std::size_t p) const {
    return {points[p][0], points[p][1], points[p][2]};
  }

  /// Calls `take` with the first corner of each cell of which no corner is absent.
  template <class Take>
  void for_each_cell(Take take) const {
    for (std::size_t row = 0; row + 1 < rows; ++row) {
      for (std::size_t column = 0; column + 1 < columns; ++column) {
        const std::size_t corner = row * columns + column;
        const bool present = absent[corner] == 0 && absent[corner + 1] == 0 &&
                             absent[corner + columns] == 0 && absent[corner + columns + 1] == 0;
        if (present) take(corner);
      }
    }
  }

  /// Calls `take` with the index of each point in its block, in the order of `points`.
  template <class Take>
  void for_each_index(Take take) const {
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t column = 0; column < columns; ++column) {
        take(first + column_step * static_cast<std::int64_t>(column) +
             row_step * static_cast<std::int64_t>(row));
      }
    }
  }
};

/// The plane of one block (from 0), without its points; none if the block has no such plane or
/// only a line of it.
[[nodiscard]] std::optional<Surface> plane_of(const Extents& extents, std::size_t block,
                                              GridPlane plane);

/// The outer faces of a block, without their points, or its one row.
[[nodiscard]] std::vector<Surface> faces_of(const Extents& extents, std::size_t block);

/// Copies coordinates and blanking from its block.
void take_points(Surface& surface, const Block& block);

}  // namespace p3dgrid::tool::plot
