#pragma once

#include <algorithm>

#include "plot/canvas.hpp"
#include "plot/render.hpp"
#include "plot/ticks.hpp"
#include "plot/view.hpp"

namespace p3dgrid::tool::plot {

/// The part of the page that shows the surfaces, in pixels.
struct Area {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// How far labels go across the page, in pixels.
struct Reach {
  double left = 0;
  double right = 0;
};

/// Width of the lines of axes and frames; `text` is the size of the labels.
[[nodiscard]] inline double thin_line(double text) {
  return std::max(1.0, text / 16);
}

/// Ticks of the two axes of a view along a coordinate axis; `text` is the size of the labels.
[[nodiscard]] Ticks ticks_across(const Projection& projection, const Area& area, const Box& box,
                                 double text);
[[nodiscard]] Ticks ticks_up(const Projection& projection, const Area& area, const Box& box,
                             double text);

/// The longest label's width.
[[nodiscard]] double widest_label(Canvas& canvas, const Ticks& ticks, double text);

/// Draws frame, ticks and names of the two axes.
void draw_flat_axes(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                    double text);

/// Draws those edges of the box that are behind what is in it.
void draw_box_behind(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                     double text);

/// Draws ticks, labels and names along three edges of the box.
Reach draw_box_axes(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                    double text);

}  // namespace p3dgrid::tool::plot
