#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <p3dgrid/grid.hpp>
#include <span>
#include <vector>

#include "geometry.hpp"
#include "options.hpp"

namespace p3dgrid::tool::plot {

/// A cell of a surface.
struct Cell {
  /// The first corner and the others around it. A triangle has the last one twice.
  std::array<std::size_t, 4> corners;
  std::size_t number;  ///< of its value
};

/// Points of a cut, in cells of their own instead of rows and columns.
struct CutCells {
  /// A point on an edge of the block.
  struct Source {
    std::int64_t from;
    std::int64_t to;
    double share;  ///< of the edge, from 0 to 1
  };
  /// Where the cut crosses a face of a cell of the block.
  struct Line {
    std::size_t from;
    std::size_t to;
    bool is_outer;  ///< the face is one of the block
  };
  std::vector<Source> sources = {};  ///< of each point
  std::vector<Cell> cells = {};
  std::vector<Line> lines = {};
  std::vector<std::size_t> crossed = {};  ///< lowest points of the cells of the block
};

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
  std::vector<char> absent = {};          ///< blanked or not finite
  bool has_invalid_points = false;        ///< points that are not blanked and not finite
  std::vector<float> values = {};         ///< shown by colour; empty for a mesh
  std::vector<float> cell_values = {};    ///< instead: by the numbers of cells
  std::optional<CutCells> cut = {};       ///< of a surface that is no grid surface
  std::vector<std::uint8_t> beyond = {};  ///< the sides of the box that a point is beyond, as bits

  [[nodiscard]] Vector place(std::size_t p) const {
    return {points[p][0], points[p][1], points[p][2]};
  }

  /// Whether no corner is absent, and not all of them are beyond one side of the box.
  [[nodiscard]] bool shows(std::span<const std::size_t> corners) const {
    std::uint8_t side = 0xff;
    for (const std::size_t corner : corners) {
      if (absent[corner] != 0) return false;
      side = beyond.empty() ? 0 : side & beyond[corner];
    }
    return side == 0;
  }

  /// Calls `take` with each cell that is shown.
  template <class Take>
  void for_each_cell(Take take) const {
    if (cut) {
      for (const Cell& cell : cut->cells) {
        if (shows(cell.corners)) take(cell);
      }
      return;
    }
    for (std::size_t row = 0; row + 1 < rows; ++row) {
      for (std::size_t column = 0; column + 1 < columns; ++column) {
        const std::size_t corner = row * columns + column;
        const Cell cell = {{corner, corner + 1, corner + columns + 1, corner + columns}, corner};
        if (shows(cell.corners)) take(cell);
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

  /// Calls `take` with the value at each point, from those of the block.
  template <class Take>
  void for_each_value(const Reals& values_of_block, Take take) const {
    if (!cut) return for_each_index([&](std::int64_t index) { take(values_of_block[index]); });
    for (const CutCells::Source& source : cut->sources) {
      const double low = values_of_block[source.from];
      take(low + source.share * (values_of_block[source.to] - low));
    }
  }
};

/// The plane of one block (from 0), without its points; none if the block has no such plane or
/// only a line of it.
[[nodiscard]] std::optional<Surface> plane_of(const Extents& extents, std::size_t block,
                                              IndexPlane plane);

/// The outer faces of a block, without their points, or its one row.
[[nodiscard]] std::vector<Surface> faces_of(const Extents& extents, std::size_t block);

/// Cuts the cells of a block that have no blanked corner; none if it has no cells there.
/// @param number  of the block, from 0
[[nodiscard]] std::optional<Surface> cut_through(const Block& block, std::size_t number,
                                                 const CoordinatePlane& cut);

/// Copies coordinates and blanking from its block to a grid surface.
void take_points(Surface& surface, const Block& block);

/// A measure of the cells of a surface.
enum class CellQuality {
  skewness,    ///< largest deviation of a corner from 90 degrees, divided by 90
  stretching,  ///< largest ratio of an edge to its neighbours on the grid line, at least 1
};

[[nodiscard]] constexpr const char* name_of(CellQuality quality) {
  return quality == CellQuality::skewness ? "skewness" : "stretching";
}

/// Sets the values of the cells of a grid surface, or of the cells of the block that a cut crosses,
/// from the coordinates of the block in their full precision.
void take_quality(Surface& surface, const Block& block, CellQuality quality);

}  // namespace p3dgrid::tool::plot
