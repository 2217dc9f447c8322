#pragma once

#include <cstdint>
#include <vector>

#include "plot/colours.hpp"

namespace p3dgrid::tool::plot {

/// A corner of something to draw. Places are in fine pixels, down from the top left corner; what
/// is nearer to the eye has the greater depth, in the same measure.
struct Vertex {
  double x = 0;
  double y = 0;
  double depth = 0;
  double value = 0;
};

/// Millions of triangles and lines, each hidden by what is nearer to the eye, on a picture that is
/// `fineness` times finer each way than what comes out, so that edges come out smooth.
class Raster {
 public:
  static constexpr int fineness = 3;

  /// Width and height of the picture that comes out.
  Raster(int width, int height);

  [[nodiscard]] int width() const { return width_ / fineness; }
  [[nodiscard]] int height() const { return height_ / fineness; }

  /// A triangle; `colour_of` gives the colour for a value between those of the corners.
  template <class ColourOf>
  void triangle(const Vertex& a, const Vertex& b, const Vertex& c, const ColourOf& colour_of) {
    const Plane plane(a, b, c);
    if (plane.empty) return;
    const auto [top, bottom] = rows_of(a, b, c);
    for (int y = top; y <= bottom; ++y) {
      const auto [left, right] = plane.span(y, width_);
      for (int x = left; x <= right; ++x) {
        const auto depth = static_cast<float>(plane.depth(x, y));
        const std::size_t pixel = at(x, y);
        if (depth <= depths_[pixel]) continue;
        depths_[pixel] = depth;
        colours_[pixel] = opaque | colour_of(plane.value(x, y));
      }
    }
  }

  /// A line of the given width in fine pixels, lifted a little toward the eye, so that it shows on
  /// the surface it belongs to.
  void line(const Vertex& from, const Vertex& to, double line_width, Colour colour);

  /// The picture, row after row: alpha, red, green, blue in 8 bits each, colours multiplied by
  /// alpha.
  [[nodiscard]] std::vector<std::uint32_t> reduced() const;

 private:
  static constexpr std::uint32_t opaque = 0xff000000;

  struct Rows {
    int first;
    int last;
  };

  /// The plane through three corners, as linear functions of the pixel.
  struct Plane {
    Plane(const Vertex& a, const Vertex& b, const Vertex& c);
    /// Pixels of a row whose centres are in the triangle; last before first for none.
    [[nodiscard]] Rows span(int y, int width) const;
    [[nodiscard]] double depth(int x, int y) const { return weighed(depths, x, y); }
    [[nodiscard]] double value(int x, int y) const { return weighed(values, x, y); }

    bool empty = false;

   private:
    struct Weight {  ///< of a corner at pixel (x, y): x * by_x + y * by_y + rest
      double by_x, by_y, rest;
    };
    [[nodiscard]] double weighed(const double (&of_corners)[3], int x, int y) const;

    Weight weights[3]{};
    double depths[3]{};
    double values[3]{};
  };

  [[nodiscard]] static Rows pixels_between(double low, double high, int count);
  [[nodiscard]] Rows rows_of(const Vertex& a, const Vertex& b, const Vertex& c) const;
  [[nodiscard]] std::size_t at(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
           static_cast<std::size_t>(x);
  }
  void dot(int x, int y, double depth, Colour colour);

  int width_;
  int height_;
  std::vector<float> depths_;
  std::vector<std::uint32_t> colours_;
};

}  // namespace p3dgrid::tool::plot
