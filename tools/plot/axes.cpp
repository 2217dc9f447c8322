#include "plot/axes.hpp"

#include <array>
#include <cmath>

namespace p3dgrid::tool::plot {
namespace {

constexpr std::array corners = {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U};  // of a box

constexpr const char* axis_names[] = {"x", "y", "z"};

// In sizes of the text.
constexpr double room_across = 5.5;  // for each tick of a flat view
constexpr double room_up = 3.0;
constexpr double room_along = 3.5;  // for each tick along an edge of the box
constexpr double label_distance = 1.0;
constexpr double name_distance = 16.0 / 15;  // beyond the labels
constexpr double least_edge = 2.0;           // shorter edges have no ticks

struct Place {
  double x = 0;
  double y = 0;

  friend Place operator+(Place a, Place b) { return {a.x + b.x, a.y + b.y}; }
  friend Place operator-(Place a, Place b) { return {a.x - b.x, a.y - b.y}; }
  friend Place operator*(double factor, Place a) { return {factor * a.x, factor * a.y}; }
  [[nodiscard]] double length() const { return std::hypot(x, y); }
};

Place on_page(const Axes& axes, const Vector& place) {
  return {axes.area.x + axes.projection.x(place), axes.area.y + axes.projection.y(place)};
}

/// Draws ticks and labels along edges of the box; omits labels that would overlap others.
class BoxAxes {
 public:
  BoxAxes(Canvas& canvas, const Axes& axes)
      : canvas_(canvas), axes_(axes), box_(axes.box), text_(axes.text) {}

  /// Draws along the lowest edge of that coordinate on the page, for z the leftmost.
  void draw_axis(std::size_t coordinate) {
    const unsigned bit = 1U << coordinate;
    const auto rank = [&](unsigned corner) {  // of the edge that begins there
      if ((corner & bit) != 0) return double{INFINITY};
      const Place middle = 0.5 * (at_corner(corner) + at_corner(corner | bit));
      return coordinate == 2 ? middle.x : -middle.y;
    };
    draw_edge(coordinate, box_.corner(*std::ranges::min_element(corners, {}, rank)));
  }

  [[nodiscard]] Range reach() const { return reach_; }

 private:
  struct Label {
    Place centre;
    double half;  ///< of its width
  };

  [[nodiscard]] Place at_corner(unsigned number) const {
    return on_page(axes_, box_.corner(number));
  }

  /// The unit vector across the edge, away from the centre of the box.
  [[nodiscard]] Place outward(Place from, Place to) const {
    const Place along = to - from;
    const double length = along.length();
    const Place across = {-along.y / length, along.x / length};
    const Place away = 0.5 * (from + to) - 0.5 * (at_corner(0) + at_corner(7));
    return across.x * away.x + across.y * away.y >= 0 ? across : -1.0 * across;
  }

  void draw_edge(std::size_t coordinate, Vector place) {
    const double low = box_.low[coordinate];
    const double high = box_.high[coordinate];
    const Place from = on_page(axes_, place);
    place[coordinate] = high;
    const Place to = on_page(axes_, place);
    const double length = (to - from).length();
    if (high <= low || length < least_edge * text_) return;
    const Place out = outward(from, to);
    const double thin = thin_line(text_);
    canvas_.line(from.x, from.y, to.x, to.y, thin, ink);
    const Ticks ticks =
        ticks_between(low, box_.value(coordinate, high), length / (room_along * text_));
    const double half_widest = std::abs(out.x) * widest_label(canvas_, ticks, text_) / 2;
    const double reach = label_distance * text_ + half_widest;
    for (const double value : ticks.values) {
      place[coordinate] = box_.drawn(coordinate, value);
      const Place tick = on_page(axes_, place);
      const Place end = tick + tick_length * text_ * out;
      canvas_.line(tick.x, tick.y, end.x, end.y, thin, ink);
      draw_label(tick + reach * out, ticks.label(value));
    }
    const double beyond = reach + half_widest + name_distance * text_;
    draw_label(0.5 * (from + to) + beyond * out, axis_names[coordinate]);
  }

  void draw_label(Place centre, const std::string& label) {
    const Font font{text_};
    const double half = canvas_.text_width(label, font) / 2 + 0.15 * text_;
    const auto overlaps = [&](const Label& other) {
      return std::abs(other.centre.x - centre.x) < half + other.half &&
             std::abs(other.centre.y - centre.y) < text_;
    };
    if (std::ranges::any_of(drawn_, overlaps)) return;
    reach_.include(centre.x - half);
    reach_.include(centre.x + half);
    drawn_.push_back({centre, half});
    canvas_.text(centre.x, centre.y, label, font, {0.5, 0.5});
  }

  Canvas& canvas_;
  const Axes& axes_;
  const Box& box_;
  double text_;
  std::vector<Label> drawn_;
  Range reach_;  ///< of the labels, horizontally
};

/// The centre of a pixel, which makes lines sharp.
double sharp(double place) {
  return std::floor(place) + 0.5;
}

}  // namespace

double widest_label(Canvas& canvas, const Ticks& ticks, double text) {
  double widest = 0;
  for (const double value : ticks.values) {
    widest = std::max(widest, canvas.text_width(ticks.label(value), {text}));
  }
  return widest;
}

Ticks Axes::ticks_across() const {
  const std::size_t c = projection.view.plane.value()[0];
  const double low = projection.left;
  const double high = low + area.width / projection.scale;
  return ticks_between(box.value(c, low), box.value(c, high), area.width / (room_across * text));
}

Ticks Axes::ticks_up() const {
  const std::size_t c = projection.view.plane.value()[1];
  const double high = projection.top;
  const double low = high - area.height / projection.scale;
  return ticks_between(box.value(c, low), box.value(c, high), area.height / (room_up * text));
}

void Axes::draw_flat(Canvas& canvas) const {
  const double bottom = area.y + area.height;
  const double thin = thin_line(text);
  const auto [right_name, up_name] = projection.view.plane.value();
  const Ticks across = ticks_across();
  for (const double value : across.values) {
    const double x =
        sharp(area.x + (box.drawn(right_name, value) - projection.left) * projection.scale);
    canvas.line(x, bottom, x, bottom + tick_length * text, thin, ink);
    canvas.text(x, bottom + label_gap * text, across.label(value), {text}, {0.5, 1});
  }
  const Ticks up = ticks_up();
  for (const double value : up.values) {
    const double y =
        sharp(area.y + (projection.top - box.drawn(up_name, value)) * projection.scale);
    canvas.line(area.x - tick_length * text, y, area.x, y, thin, ink);
    canvas.text(area.x - label_gap * text, y, up.label(value), {text}, {1, 0.5});
  }
  canvas.frame(area.x - 0.5, area.y - 0.5, area.width + 1, area.height + 1, thin, ink);
  canvas.text(area.x + area.width / 2.0, bottom + (label_gap + 1.3) * text, axis_names[right_name],
              {text}, {0.5, 1});
  const double beside = label_gap * text + widest_label(canvas, up, text) + 0.9 * text;
  canvas.text(area.x - beside, area.y + area.height / 2.0, axis_names[up_name], {text}, {0.5, 0.5});
}

void Axes::draw_box_behind(Canvas& canvas) const {
  // The three edges that meet at the corner nearest to the eye are in front.
  const unsigned nearest = *std::ranges::max_element(corners, {}, [this](unsigned corner) {
    return dot(projection.view.toward, box.corner(corner));
  });
  for (const unsigned corner : corners) {
    for (const unsigned bit : {1U, 2U, 4U}) {
      const unsigned other = corner | bit;
      if (other == corner || corner == nearest || other == nearest) continue;
      const Place from = on_page(*this, box.corner(corner));
      const Place to = on_page(*this, box.corner(other));
      canvas.line(from.x, from.y, to.x, to.y, thin_line(text), back_line);
    }
  }
}

Range Axes::draw_box(Canvas& canvas) const {
  BoxAxes axes(canvas, *this);
  for (std::size_t coordinate = 0; coordinate < 3; ++coordinate) axes.draw_axis(coordinate);
  return axes.reach();
}

}  // namespace p3dgrid::tool::plot
