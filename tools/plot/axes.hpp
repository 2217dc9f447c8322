#pragma once

#include <algorithm>

#include "plot/canvas.hpp"
#include "plot/scale.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

// In sizes of the text.
inline constexpr double tick_length = 0.35;
inline constexpr double label_gap = 0.6;

/// Width of the lines of axes and frames; `text` is the size of the labels.
[[nodiscard]] inline double thin_line(double text) {
  return std::max(1.0, text / 16);
}

[[nodiscard]] double widest_label(Canvas& canvas, const Ticks& ticks, double text);

/// The part of the page that shows the surfaces, in pixels.
struct Area {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// The axes of a picture, to be drawn around its surfaces.
struct Axes {
  const Projection& projection;
  const Area& area;
  const Box& box;
  double text;  ///< size of the labels

  /// Ticks of a flat view.
  [[nodiscard]] Ticks ticks_across() const;
  [[nodiscard]] Ticks ticks_up() const;

  /// Draws frame, ticks and names of the two axes of a flat view.
  void draw_flat(Canvas& canvas) const;

  /// Draws the edges of the box that are behind the surfaces.
  void draw_box_behind(Canvas& canvas) const;

  /// Draws ticks, labels and names along three edges of the box. Returns the horizontal extent of
  /// the labels on the page, in pixels.
  Range draw_box(Canvas& canvas) const;
};

}  // namespace p3dgrid::tool::plot
