#include "plot/render.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "plot/clip.hpp"

namespace p3dgrid::tool::plot {
namespace {

// Brightness of a surface seen edge-on; one that faces the eye has 1.
constexpr double least_light = 0.78;

// Sizes for surfaces of one row, in widths of mesh lines.
constexpr double row_line = 5;
constexpr double row_mark = 9;
constexpr double lone_mark = 16;

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
    surface_.for_each_cell([this](const Cell& cell) { fill_cell(cell); });
  }

  /// A stride that leaves the outlines of the block.
  static constexpr std::size_t outlines = std::numeric_limits<std::size_t>::max();

  /// Draws one of `stride` lines of each family, and the last, where they border a cell. The width
  /// is in fine pixels. Of a cut all lines are drawn in which it crosses the faces of cells.
  void draw_lines(std::size_t stride, Colour colour, double least_width) {
    // A whole number, so that lines at different places come out equally dark.
    const double width = std::max(least_width, std::round(fine_line_width()));
    const auto draw = [&](std::size_t from, std::size_t to) { line(from, to, width, colour); };
    if (surface_.cut) {
      for (const auto& [from, to, is_outer] : surface_.cut->lines) {
        const bool is_shown = surface_.shows(std::array{from, to});
        if (is_shown && (is_outer || stride != outlines)) draw(from, to);
      }
      return;
    }
    const std::size_t columns = surface_.columns;
    const auto wanted = [stride](std::size_t line, std::size_t lines) {
      return line % stride == 0 || line + 1 == lines;
    };
    surface_.for_each_cell([&](const Cell& cell) {
      const std::size_t corner = cell.corners[0];
      const std::size_t row = corner / columns;
      const std::size_t column = corner % columns;
      if (wanted(row, surface_.rows)) draw(corner, corner + 1);
      if (wanted(row + 1, surface_.rows)) draw(corner + columns, corner + columns + 1);
      if (wanted(column, columns)) draw(corner, corner + columns);
      if (wanted(column + 1, columns)) draw(corner + 1, corner + columns + 1);
    });
  }

  /// Draws the points of a single row and the lines between them.
  void draw_row() {
    const double mark = (vertices_.size() == 1 ? lone_mark : row_mark) * fine_line_width();
    for (std::size_t p = 0; p < vertices_.size(); ++p) {
      if (surface_.absent[p] != 0) continue;
      const Vertex& from = vertices_[p];
      raster_.line(from, from, mark, row_colour(from.value));
      if (p + 1 == vertices_.size() || surface_.absent[p + 1] != 0) continue;
      const Vertex& to = vertices_[p + 1];
      raster_.line(from, to, row_line * fine_line_width(), row_colour((from.value + to.value) / 2));
    }
  }

 private:
  [[nodiscard]] double fine_line_width() const { return style_.line_width * Raster::fineness; }

  [[nodiscard]] Colour row_colour(double value) const {
    if (!style_.levels) return block_colour(surface_.block);
    return std::isfinite(value) ? style_.levels->colour_of(value) : no_number;
  }

  [[nodiscard]] Vertex vertex(const Projection& projection, std::size_t p) const {
    if (surface_.absent[p] != 0) return {};
    const Vector place = surface_.place(p);
    constexpr double fineness = Raster::fineness;
    return {fineness * projection.x(place), fineness * projection.y(place),
            fineness * projection.depth(place),
            surface_.values.empty() ? 0 : double{surface_.values[p]}};
  }

  // Four triangles around the centre, which prefer neither diagonal.
  void fill_cell(const Cell& cell) {
    std::array<Corner, 4> corners;
    Corner middle;
    Vertex& centre = middle.vertex;
    for (std::size_t c = 0; c < 4; ++c) {
      corners[c] = corner(cell.corners[c]);
      Vertex& v = corners[c].vertex;
      if (!surface_.cell_values.empty()) v.value = surface_.cell_values[cell.number];
      centre.x += v.x / 4;
      centre.y += v.y / 4;
      centre.depth += v.depth / 4;
      centre.value += v.value / 4;
      for (std::size_t n = 0; n < 3; ++n) middle.place[n] += corners[c].place[n] / 4;
    }
    std::function<Colour(double)> colour_of = [this](double value) {
      return style_.levels->colour_of(value);
    };
    if (!style_.levels) {
      const auto grey = static_cast<Colour>(std::lround(255 * light_on(cell)));
      colour_of = [grey](double) { return grey << 16U | grey << 8U | grey; };
    } else if (!std::isfinite(centre.value)) {
      colour_of = [](double) { return no_number; };
    }
    for (std::size_t side = 0; side < 4; ++side) {
      fill({corners[side], corners[(side + 1) % 4], middle}, colour_of);
    }
  }

  [[nodiscard]] Corner corner(std::size_t p) const { return {surface_.place(p), vertices_[p]}; }

  void fill(std::vector<Corner> polygon, const std::function<Colour(double)>& colour_of) {
    if (style_.clip) polygon = clipped(std::move(polygon), *style_.clip);
    for (std::size_t n = 2; n < polygon.size(); ++n) {
      raster_.triangle(polygon[0].vertex, polygon[n - 1].vertex, polygon[n].vertex, colour_of);
    }
  }

  void line(std::size_t from, std::size_t to, double width, Colour colour) {
    if (!style_.clip) return raster_.line(vertices_[from], vertices_[to], width, colour);
    const auto part = clipped(corner(from), corner(to), *style_.clip);
    if (part) raster_.line(part->first, part->second, width, colour);
  }

  /// Brightness of a cell by its angle to the eye.
  [[nodiscard]] double light_on(const Cell& cell) const {
    if (view_.plane) return 1;
    const auto diagonal = [&](std::size_t from, std::size_t to) {
      return surface_.place(cell.corners[to]) - surface_.place(cell.corners[from]);
    };
    const Vector normal = cross(diagonal(0, 2), diagonal(1, 3));
    const double length = std::sqrt(dot(normal, normal));
    if (length == 0) return 1;
    return least_light + (1 - least_light) * std::abs(dot(normal, view_.toward)) / length;
  }

  const Surface& surface_;
  const Style& style_;
  Raster& raster_;
  const View& view_;
  std::vector<Vertex> vertices_;
};

}  // namespace

// Distinct for the colour-blind, and dark enough for thin lines on white.
Colour block_colour(std::size_t block) {
  constexpr std::array<Colour, 7> colours = {0x1f4e9c, 0xc44e00, 0x007a5a, 0xa02c78,
                                             0x3a8fc8, 0x8a6d00, 0x505050};
  return colours[block % colours.size()];
}

// The mean distance of lines is twice the area over the length of all lines.
std::size_t line_stride(const std::vector<Surface>& surfaces, const Projection& projection,
                        double least_distance) {
  double area = 0;
  double length = 0;
  for (const Surface& surface : surfaces) {
    if (surface.cut) continue;
    surface.for_each_cell([&](const Cell& cell) {
      const Vector from = surface.place(cell.corners[0]);
      const Vector along = surface.place(cell.corners[1]);
      const Vector across = surface.place(cell.corners[3]);
      const double ax = projection.x(along) - projection.x(from);
      const double ay = projection.y(along) - projection.y(from);
      const double bx = projection.x(across) - projection.x(from);
      const double by = projection.y(across) - projection.y(from);
      area += std::abs(ax * by - ay * bx);
      length += std::hypot(ax, ay) + std::hypot(bx, by);
    });
  }
  if (area == 0 || length == 0) return 1;
  return static_cast<std::size_t>(std::max(1.0, std::ceil(least_distance * length / (2 * area))));
}

void render(const std::vector<Surface>& surfaces, const Projection& projection, const Style& style,
            Raster& raster) {
  for (const Surface& surface : surfaces) {
    SurfaceRenderer renderer(surface, projection, style, raster);
    renderer.fill_cells();
    if (surface.rows == 1) {
      renderer.draw_row();
    } else if (style.levels) {
      const bool is_mesh = !surface.cell_values.empty();
      if (is_mesh) renderer.draw_lines(style.line_stride, pale_ink, 1);
      renderer.draw_lines(SurfaceRenderer::outlines, block_edge, 2);
    } else {
      renderer.draw_lines(style.line_stride, block_colour(surface.block), 1);
    }
  }
}

}  // namespace p3dgrid::tool::plot
