#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {

/// A corner of a triangle or an end of a line, in fine pixels from the top left corner. Greater
/// depths are nearer to the eye.
struct Vertex {
  double x = 0;
  double y = 0;
  double depth = 0;
  double value = 0;
};

/// A depth buffer for triangles and lines. It has `fineness` times the resolution of the picture
/// each way, for smooth edges.
class Raster {
 public:
  static constexpr int fineness = 3;

  /// Width and height of the picture.
  Raster(int width, int height);

  /// Fills a triangle with the colours of the values interpolated between its corners.
  void triangle(const Vertex& a, const Vertex& b, const Vertex& c,
                const std::function<Colour(double value)>& colour_of);

  /// Draws a line of the given width in fine pixels. It is lifted a little toward the eye, to be
  /// visible on its own surface.
  void line(const Vertex& from, const Vertex& to, double line_width, Colour colour);

  /// The picture in its own resolution, row after row: alpha, red, green and blue in 8 bits each,
  /// colours premultiplied by alpha.
  [[nodiscard]] std::vector<std::uint32_t> reduced() const;

 private:
  [[nodiscard]] std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
           static_cast<std::size_t>(x);
  }
  /// Tests and sets the depth of a pixel. Returns its colour to set, null if it is hidden.
  std::uint32_t* visible(int x, int y, double depth);

  int width_;
  int height_;
  std::vector<float> depths_;
  std::vector<std::uint32_t> colours_;
};

}  // namespace p3dgrid::tool::plot
