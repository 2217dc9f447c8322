#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "plot/surface.hpp"
#include "quality.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr double not_measured = std::numeric_limits<double>::quiet_NaN();

/// Measures cells of a block or of a grid surface, which extend in three or two directions. Bit d
/// of the number of a corner is set at the upper end of direction d.
struct CellMeter {
  struct Line {
    std::int64_t step;   ///< from a point to the next
    std::int64_t count;  ///< of points
  };

  const Block& block;
  std::span<const Line> lines;          ///< by direction
  std::int64_t lowest = 0;              ///< point of the cell
  std::array<std::int64_t, 3> at = {};  ///< its place on the lines

  /// Moves to a cell.
  /// @param first   point of the block or surface
  /// @param number  of the lowest point, in the order of the lines
  void move(std::int64_t first, std::int64_t number) {
    lowest = first;
    for (std::size_t d = 0; d < lines.size(); ++d) {
      at[d] = number % lines[d].count;
      number /= lines[d].count;
      lowest += at[d] * lines[d].step;
    }
  }

  /// A corner, or a point some steps further in a direction.
  [[nodiscard]] Vector point(unsigned corner, std::size_t direction, std::int64_t steps) const {
    std::int64_t p = lowest + steps * lines[direction].step;
    for (std::size_t d = 0; d < lines.size(); ++d) p += (corner >> d & 1U) * lines[d].step;
    return {block.x[p], block.y[p], block.z[p]};
  }

  [[nodiscard]] double skewness() const {
    double worst = 0;
    for (unsigned corner = 0; corner < 1U << lines.size(); ++corner) {
      const auto edge = [&](std::size_t d) {
        return point(corner ^ 1U << d, d, 0) - point(corner, d, 0);
      };
      for (std::size_t a = 1; a < lines.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
          const double cosine = squared_cosine(edge(a), edge(b));
          if (std::isnan(cosine)) return not_measured;
          worst = std::max(worst, cosine);
        }
      }
    }
    return skewness_of(worst);
  }

  [[nodiscard]] double stretching() const {
    double worst = 1;
    for (std::size_t d = 0; d < lines.size(); ++d) {
      for (unsigned corner = 0; corner < 1U << lines.size(); ++corner) {
        if ((corner >> d & 1U) != 0) continue;
        const auto length = [&](std::int64_t edge) {
          const Vector vector = point(corner, d, edge + 1) - point(corner, d, edge);
          return dot(vector, vector);
        };
        if (at[d] > 0) worst = std::max(worst, squared_ratio(length(-1), length(0)));
        if (at[d] + 2 < lines[d].count)
          worst = std::max(worst, squared_ratio(length(0), length(1)));
      }
    }
    return std::isfinite(worst) ? std::sqrt(worst) : not_measured;
  }
};

}  // namespace

void take_quality(Surface& surface, const Block& block, CellQuality quality) {
  const auto measure = [quality](CellMeter& meter, std::int64_t first, std::size_t number) {
    meter.move(first, static_cast<std::int64_t>(number));
    return static_cast<float>(quality == CellQuality::skewness ? meter.skewness()
                                                               : meter.stretching());
  };
  if (surface.cut) {
    const auto& [i, j, k] = block.extents;
    const std::array<CellMeter::Line, 3> lines = {{{1, i}, {i, j}, {std::int64_t{i} * j, k}}};
    CellMeter meter{block, lines};
    for (const std::size_t cell : surface.cut->crossed) {
      surface.cell_values.push_back(measure(meter, 0, cell));
    }
    return;
  }
  const std::array<CellMeter::Line, 2> lines = {
      {{surface.column_step, static_cast<std::int64_t>(surface.columns)},
       {surface.row_step, static_cast<std::int64_t>(surface.rows)}}};
  CellMeter meter{block, lines};
  surface.cell_values.resize(surface.points.size());
  surface.for_each_cell([&](const Cell& cell) {
    surface.cell_values[cell.number] = measure(meter, surface.first, cell.number);
  });
}

}  // namespace p3dgrid::tool::plot
