#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "form_options.hpp"
#include "grid_file.hpp"

namespace p3dgrid::tool::plot {

using Point = std::array<float, 3>;

/// The points of a block in which one of the three indices has one value.
struct GridPlane {
  std::size_t direction = 2;       ///< 0 for i, 1 for j, 2 for k
  mod_p3dgrid::integer index = 1;  ///< from 1; 0 for the last
};

/// "k=1" or "j=last" as a plane; nothing when `text` is something else.
[[nodiscard]] std::optional<GridPlane> plane_in(const std::string& text);

/// The text that `plane_in` reads back.
[[nodiscard]] std::string describe(const GridPlane& plane);

/// A sheet of points in rows and columns, cut out of a block; a line of them where there is one
/// row.
struct Surface {
  std::size_t block = 0;  ///< from 0
  std::size_t columns = 0;
  std::size_t rows = 0;
  // Where the points are among those of all blocks.
  std::int64_t first = 0;
  std::int64_t column_step = 0;
  std::int64_t row_step = 0;
  // Of each point, row after row.
  std::vector<Point> points;
  std::vector<char> absent;   ///< blanked, or without a finite place
  bool has_lost = false;      ///< points in use without a finite place
  std::vector<float> values;  ///< what is shown by colour, if anything is

  [[nodiscard]] std::size_t at(std::size_t column, std::size_t row) const {
    return row * columns + column;
  }
  /// True for a cell all of whose corners are there; false beyond the last cell.
  [[nodiscard]] bool has_cell(std::size_t column, std::size_t row) const;

  /// Calls `take` for each point in the order of `points`, with its place among those of all
  /// blocks.
  template <class Take>
  void for_each_point(Take take) const {
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t column = 0; column < columns; ++column) {
        take(first + column_step * static_cast<std::int64_t>(column) +
             row_step * static_cast<std::int64_t>(row));
      }
    }
  }
};

/// The plane of one block (from 0), without its points; nothing where the block has no such plane
/// or only a line of it.
[[nodiscard]] std::optional<Surface> plane_of(const Extents& extents, std::size_t block,
                                              GridPlane plane);

/// The outer faces of a block, without their points; of a line or a point, that itself.
[[nodiscard]] std::vector<Surface> faces_of(const Extents& extents, std::size_t block);

/// Takes the coordinates and the blanking of the surface out of the grid.
void take_points(Surface& surface, const Grid& grid);

}  // namespace p3dgrid::tool::plot
