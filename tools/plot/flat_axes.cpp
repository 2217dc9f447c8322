#include <algorithm>
#include <cmath>

#include "plot/axes.hpp"

namespace p3dgrid::plot {
namespace {

constexpr const char* names[] = {"x", "y", "z"};

// In sizes of the text.
constexpr double tick_length = 0.35;
constexpr double label_gap = 0.6;
constexpr double room_across = 5.5;  // for each tick and its label
constexpr double room_up = 3.0;

}  // namespace

Ticks ticks_across(const Projection& projection, const Area& area, double text) {
  const double low = projection.left;
  return ticks_between(low, low + area.width / projection.scale, area.width / (room_across * text));
}

Ticks ticks_up(const Projection& projection, const Area& area, double text) {
  const double high = projection.top;
  return ticks_between(high - area.height / projection.scale, high, area.height / (room_up * text));
}

double widest_label(Canvas& canvas, const Ticks& ticks, double text) {
  double widest = 0;
  for (const double value : ticks.values) {
    widest = std::max(widest, canvas.text_width(ticks.label(value), {text}));
  }
  return widest;
}

void draw_flat_axes(Canvas& canvas, const Projection& projection, const Area& area, double text) {
  const double bottom = area.y + area.height;
  const double thin = thin_line(text);
  const auto [right_name, up_name] = projection.view.plane.value();
  // On whole pixels, so that the lines come out sharp.
  const auto sharp = [](double place) { return std::floor(place) + 0.5; };

  const Ticks across = ticks_across(projection, area, text);
  for (const double value : across.values) {
    const double x = sharp(area.x + (value - projection.left) * projection.scale);
    canvas.line(x, bottom, x, bottom + tick_length * text, thin, ink);
    canvas.text(x, bottom + label_gap * text, across.label(value), {text}, {0.5, 1});
  }
  const Ticks up = ticks_up(projection, area, text);
  for (const double value : up.values) {
    const double y = sharp(area.y + (projection.top - value) * projection.scale);
    canvas.line(area.x - tick_length * text, y, area.x, y, thin, ink);
    canvas.text(area.x - label_gap * text, y, up.label(value), {text}, {1, 0.5});
  }
  canvas.frame(area.x - 0.5, area.y - 0.5, area.width + 1, area.height + 1, thin, ink);
  canvas.text(area.x + area.width / 2.0, bottom + (label_gap + 1.3) * text, names[right_name],
              {text}, {0.5, 1});
  const double beside = label_gap * text + widest_label(canvas, up, text) + 0.9 * text;
  canvas.text(area.x - beside, area.y + area.height / 2.0, names[up_name], {text}, {0.5, 0.5});
}

}  // namespace p3dgrid::plot
