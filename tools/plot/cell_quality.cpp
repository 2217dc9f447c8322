#include "plot/cell_quality.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "plot/view.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr double not_measured = std::numeric_limits<double>::quiet_NaN();

/// Measures cells by row and column.
struct Sheet {
  const Surface& surface;
  const Block& block;

  [[nodiscard]] Vector at(std::size_t row, std::size_t column) const {
    const std::int64_t p = surface.first + surface.column_step * static_cast<std::int64_t>(column) +
                           surface.row_step * static_cast<std::int64_t>(row);
    return {block.x[p], block.y[p], block.z[p]};
  }

  [[nodiscard]] double skewness(std::size_t row, std::size_t column) const {
    const std::array<Vector, 4> corners = {at(row, column), at(row, column + 1),
                                           at(row + 1, column + 1), at(row + 1, column)};
    double worst = 0;
    for (std::size_t c = 0; c < 4; ++c) {
      const Vector one = difference(corners[(c + 1) % 4], corners[c]);
      const Vector other = difference(corners[(c + 3) % 4], corners[c]);
      const double scale = std::sqrt(dot(one, one) * dot(other, other));
      if (scale == 0) return not_measured;
      worst = std::max(worst, std::abs(dot(one, other)) / scale);
    }
    return std::asin(std::min(worst, 1.0)) / (std::numbers::pi / 2);
  }

  [[nodiscard]] double stretching(std::size_t row, std::size_t column) const {
    double worst = 1;
    for (const std::size_t r : {row, row + 1}) {
      const auto length = [&](std::size_t c) { return distance(at(r, c), at(r, c + 1)); };
      worst = std::max(worst, largest_ratio(length, column, surface.columns - 1));
    }
    for (const std::size_t c : {column, column + 1}) {
      const auto length = [&](std::size_t r) { return distance(at(r, c), at(r + 1, c)); };
      worst = std::max(worst, largest_ratio(length, row, surface.rows - 1));
    }
    return std::isfinite(worst) ? worst : not_measured;
  }

 private:
  [[nodiscard]] static Vector difference(const Vector& a, const Vector& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
  }
  [[nodiscard]] static double distance(const Vector& a, const Vector& b) {
    return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
  }

  /// The largest ratio of an edge and its neighbours on a grid line of `edges` edges.
  template <class Length>
  [[nodiscard]] static double largest_ratio(Length length, std::size_t edge, std::size_t edges) {
    const auto ratio = [](double a, double b) { return std::max(a, b) / std::min(a, b); };
    double worst = 1;
    if (edge > 0) worst = std::max(worst, ratio(length(edge - 1), length(edge)));
    if (edge + 1 < edges) worst = std::max(worst, ratio(length(edge), length(edge + 1)));
    return worst;
  }
};

}  // namespace

void take_quality(Surface& surface, const Block& block, CellQuality quality) {
  const Sheet sheet{surface, block};
  std::vector<float> values(surface.points.size());
  surface.for_each_cell([&](const Cell& cell) {
    const std::size_t row = cell[0] / surface.columns;
    const std::size_t column = cell[0] % surface.columns;
    values[cell[0]] =
        static_cast<float>(quality == CellQuality::skewness ? sheet.skewness(row, column)
                                                            : sheet.stretching(row, column));
  });
  surface.cell_values = std::move(values);
}

}  // namespace p3dgrid::tool::plot
