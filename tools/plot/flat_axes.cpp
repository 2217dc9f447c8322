#include <algorithm>
#include <cmath>

#include "plot/axes.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr const char* names[] = {"x", "y", "z"};

// In sizes of the text.
constexpr double tick_length = 0.35;
constexpr double label_gap = 0.6;
constexpr double room_across = 5.5;  // for each tick and its label
constexpr double room_up = 3.0;

}  // namespace

Ticks ticks_across(const Projection& projection, const Area& area, const Box& box, double text) {
  const std::size_t c = projection.view.plane.value()[0];
  const double low = projection.left;
  const double high = low + area.width / projection.scale;
  return ticks_between(box.value(c, low), box.value(c, high), area.width / (room_across * text));
}

Ticks ticks_up(const Projection& projection, const Area& area, const Box& box, double text) {
  const std::size_t c = projection.view.plane.value()[1];
  const double high = projection.top;
  const double low = high - area.height / projection.scale;
  return ticks_between(box.value(c, low), box.value(c, high), area.height / (room_up * text));
}

double widest_label(Canvas& canvas, const Ticks& ticks, double text) {
  double widest = 0;
  for (const double value : ticks.values) {
    widest = std::max(widest, canvas.text_width(ticks.label(value), {text}));
  }
  return widest;
}

void draw_flat_axes(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                    double text) {
  const double bottom = area.y + area.height;
  const double thin = thin_line(text);
  const auto [right_name, up_name] = projection.view.plane.value();
  // On whole pixels, so that the lines come out sharp.
  const auto sharp = [](double place) { return std::floor(place) + 0.5; };

  const Ticks across = ticks_across(projection, area, box, text);
  for (const double value : across.values) {
    const double x =
        sharp(area.x + (box.drawn(right_name, value) - projection.left) * projection.scale);
    canvas.line(x, bottom, x, bottom + tick_length * text, thin, ink);
    canvas.text(x, bottom + label_gap * text, across.label(value), {text}, {0.5, 1});
  }
  const Ticks up = ticks_up(projection, area, box, text);
  for (const double value : up.values) {
    const double y =
        sharp(area.y + (projection.top - box.drawn(up_name, value)) * projection.scale);
    canvas.line(area.x - tick_length * text, y, area.x, y, thin, ink);
    canvas.text(area.x - label_gap * text, y, up.label(value), {text}, {1, 0.5});
  }
  canvas.frame(area.x - 0.5, area.y - 0.5, area.width + 1, area.height + 1, thin, ink);
  canvas.text(area.x + area.width / 2.0, bottom + (label_gap + 1.3) * text, names[right_name],
              {text}, {0.5, 1});
  const double beside = label_gap * text + widest_label(canvas, up, text) + 0.9 * text;
  canvas.text(area.x - beside, area.y + area.height / 2.0, names[up_name], {text}, {0.5, 0.5});
}

}  // namespace p3dgrid::tool::plot
