#include "plot/render.hpp"

#include <algorithm>
#include <cmath>

namespace p3dgrid::tool::plot {
namespace {

// A surface seen edge-on is this much of the brightness of one that faces the eye.
constexpr double least_light = 0.78;

// Of rows that are no surfaces, in widths of mesh lines.
constexpr double row_line = 5;
constexpr double row_mark = 9;
constexpr double lone_mark = 16;

/// One surface on its way into the raster.
class SurfaceRenderer {
 public:
  SurfaceRenderer(const Surface& surface, const Projection& projection, const Style& style,
                  Raster& raster)
      : surface_(surface), style_(style), raster_(raster), view_(projection.view) {
    vertices_.reserve(surface.points.size());
    for (std::size_t p = 0; p < surface.points.size(); ++p) {
      vertices_.push_back(vertex(projection, p));
    }
  }

  void fill_cells() {
    for (std::size_t row = 0; row + 1 < surface_.rows; ++row) {
      for (std::size_t column = 0; column + 1 < surface_.columns; ++column) {
        if (surface_.has_cell(column, row)) fill_cell(surface_.at(column, row));
      }
    }
  }

  /// Every so many-th line of each family, and the last; the width is in fine pixels.
  void draw_lines(std::size_t every, Colour colour, double least_width) {
    // A whole number, so that lines at different places come out equally dark.
    const double width = std::max(least_width, std::round(fine_line_width()));
    for_each_segment(every, [&](std::size_t from, std::size_t to) {
      raster_.line(vertices_[from], vertices_[to], width, colour);
    });
  }

  /// The points of a single row and the lines between them, in the colour of their values or in
  /// that of the block.
  void draw_row(Colour block) {
    const double mark = (vertices_.size() == 1 ? lone_mark : row_mark) * fine_line_width();
    for (std::size_t p = 0; p < vertices_.size(); ++p) {
      if (surface_.absent[p] != 0) continue;
      const Vertex& from = vertices_[p];
      raster_.line(from, from, mark, row_colour(from.value, block));
      if (p + 1 == vertices_.size() || surface_.absent[p + 1] != 0) continue;
      const Vertex& to = vertices_[p + 1];
      raster_.line(from, to, row_line * fine_line_width(),
                   row_colour((from.value + to.value) / 2, block));
    }
  }

 private:
  [[nodiscard]] double fine_line_width() const { return style_.line_width * Raster::fineness; }

  [[nodiscard]] Colour row_colour(double value, Colour without) const {
    if (!style_.levels) return without;
    return std::isfinite(value) ? style_.levels->colour_of(value) : no_number;
  }

  [[nodiscard]] Vertex vertex(const Projection& projection, std::size_t p) const {
    if (surface_.absent[p] != 0) return {};
    const Point& point = surface_.points[p];
    const Vector place = {point[0], point[1], point[2]};
    constexpr double fineness = Raster::fineness;
    return {fineness * projection.x(place), fineness * projection.y(place),
            fineness * projection.depth(place),
            surface_.values.empty() ? 0 : double{surface_.values[p]}};
  }

  // By four triangles around the middle, so that both diagonals are treated alike.
  void fill_cell(std::size_t corner) {
    const Vertex* corners[] = {&vertices_[corner], &vertices_[corner + 1],
                               &vertices_[corner + surface_.columns + 1],
                               &vertices_[corner + surface_.columns]};
    Vertex middle;
    for (const Vertex* v : corners) {
      middle.x += v->x / 4;
      middle.y += v->y / 4;
      middle.depth += v->depth / 4;
      middle.value += v->value / 4;
    }
    const auto fill = [&](const auto& colour_of) {
      for (std::size_t side = 0; side < 4; ++side) {
        raster_.triangle(*corners[side], *corners[(side + 1) % 4], middle, colour_of);
      }
    };
    if (!style_.levels) {
      const Colour paper = dimmed(white, light_on(corner));
      fill([paper](double) { return paper; });
    } else if (!std::isfinite(middle.value)) {
      fill([](double) { return no_number; });
    } else {
      fill([this](double value) { return style_.levels->colour_of(value); });
    }
  }

  [[nodiscard]] Vector between(std::size_t from, std::size_t to) const {
    Vector difference{};
    for (std::size_t c = 0; c < 3; ++c) {
      difference[c] = double{surface_.points[to][c]} - double{surface_.points[from][c]};
    }
    return difference;
  }

  /// How much a cell faces the eye.
  [[nodiscard]] double light_on(std::size_t corner) const {
    if (view_.plane) return 1;
    const Vector a = between(corner, corner + surface_.columns + 1);
    const Vector b = between(corner + 1, corner + surface_.columns);
    const Vector normal = cross(a, b);
    const double length = std::sqrt(dot(normal, normal));
    if (length == 0) return 1;
    return least_light + (1 - least_light) * std::abs(dot(normal, view_.toward)) / length;
  }

  /// Calls `take` with the ends of each stretch of a line that borders a cell.
  template <class Take>
  void for_each_segment(std::size_t every, Take take) const {
    const auto wanted = [every](std::size_t line, std::size_t lines) {
      return line % every == 0 || line + 1 == lines;
    };
    for (std::size_t row = 0; row < surface_.rows; ++row) {
      const bool whole_row = wanted(row, surface_.rows);
      for (std::size_t column = 0; column < surface_.columns; ++column) {
        const bool here = surface_.has_cell(column, row);
        const bool above = row > 0 && surface_.has_cell(column, row - 1);
        const bool before = column > 0 && surface_.has_cell(column - 1, row);
        const std::size_t p = surface_.at(column, row);
        if (whole_row && (here || above)) take(p, p + 1);
        if ((here || before) && wanted(column, surface_.columns)) take(p, p + surface_.columns);
      }
    }
  }

  const Surface& surface_;
  const Style& style_;
  Raster& raster_;
  const View& view_;
  std::vector<Vertex> vertices_;
};

}  // namespace

// The mean distance of lines is twice the area over the length of all lines.
std::size_t lines_apart(const std::vector<Surface>& surfaces, const Projection& projection,
                        double least_distance) {
  double area = 0;
  double length = 0;
  for (const Surface& surface : surfaces) {
    const auto place = [&](std::size_t p) {
      const Point& point = surface.points[p];
      const Vector vector = {point[0], point[1], point[2]};
      return std::array{projection.x(vector), projection.y(vector)};
    };
    for (std::size_t row = 0; row + 1 < surface.rows; ++row) {
      for (std::size_t column = 0; column + 1 < surface.columns; ++column) {
        if (!surface.has_cell(column, row)) continue;
        const std::size_t corner = surface.at(column, row);
        const auto from = place(corner);
        const auto along = place(corner + 1);
        const auto across = place(corner + surface.columns);
        const double ax = along[0] - from[0], ay = along[1] - from[1];
        const double bx = across[0] - from[0], by = across[1] - from[1];
        area += std::abs(ax * by - ay * bx);
        length += std::hypot(ax, ay) + std::hypot(bx, by);
      }
    }
  }
  if (area == 0 || length == 0) return 1;
  return static_cast<std::size_t>(std::max(1.0, std::ceil(least_distance * length / (2 * area))));
}

void render(const std::vector<Surface>& surfaces, const Projection& projection, const Style& style,
            Raster& raster) {
  for (const Surface& surface : surfaces) {
    SurfaceRenderer renderer(surface, projection, style, raster);
    if (surface.rows == 1) {
      renderer.draw_row(block_colour(surface.block));
      continue;
    }
    renderer.fill_cells();
    const std::size_t outline_only = std::max(surface.columns, surface.rows);
    if (style.levels) {
      renderer.draw_lines(outline_only, block_edge, 2);
    } else {
      renderer.draw_lines(style.every, block_colour(surface.block), 1);
    }
  }
}

}  // namespace p3dgrid::tool::plot
