#include <algorithm>
#include <cmath>

#include "plot/axes.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr const char* names[] = {"x", "y", "z"};

// In sizes of the text.
constexpr double tick_length = 0.35;
constexpr double label_distance = 1.0;
constexpr double name_distance = 1.6;  // beyond the labels
constexpr double room = 3.5;           // for each tick along an edge
constexpr double least_edge = 2.0;     // shorter edges have no ticks

struct Place {
  double x = 0;
  double y = 0;
};

Place operator+(Place a, Place b) {
  return {a.x + b.x, a.y + b.y};
}
Place operator-(Place a, Place b) {
  return {a.x - b.x, a.y - b.y};
}
Place operator*(double factor, Place a) {
  return {factor * a.x, factor * a.y};
}

/// Draws ticks and labels; leaves out labels that would cover others.
class BoxAxes {
 public:
  BoxAxes(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
          double text)
      : canvas_(canvas), projection_(projection), area_(area), box_(box), text_(text) {}

  /// Along the edge of that coordinate that is lowest on the page; for z the one furthest left.
  void draw_axis(std::size_t coordinate) {
    const unsigned bit = 1U << coordinate;
    unsigned chosen = 0;
    double least = INFINITY;
    for (unsigned corner = 0; corner < 8; ++corner) {
      if ((corner & bit) != 0) continue;
      const Place middle = 0.5 * (at_corner(corner) + at_corner(corner | bit));
      const double rank = coordinate == 2 ? middle.x : -middle.y;
      if (rank < least) {
        least = rank;
        chosen = corner;
      }
    }
    draw_edge(coordinate, box_.corner(chosen));
  }

  [[nodiscard]] Reach reach() const { return reach_; }

 private:
  [[nodiscard]] Place on_page(const Vector& place) const {
    return {area_.x + projection_.x(place), area_.y + projection_.y(place)};
  }
  [[nodiscard]] Place at_corner(unsigned number) const { return on_page(box_.corner(number)); }

  /// Across the edge, away from the middle of the box; of unit length.
  [[nodiscard]] Place outward(Place from, Place to) const {
    const Place along = to - from;
    const double length = std::hypot(along.x, along.y);
    const Place across = {-along.y / length, along.x / length};
    const Place middle = 0.5 * (at_corner(0) + at_corner(7));
    const Place away = 0.5 * (from + to) - middle;
    return across.x * away.x + across.y * away.y >= 0 ? across : -1.0 * across;
  }

  void draw_edge(std::size_t coordinate, Vector place) {
    const double low = box_.low[coordinate];
    const double high = box_.high[coordinate];
    const Place from = on_page(place);
    place[coordinate] = high;
    const Place to = on_page(place);
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (high <= low || length < least_edge * text_) return;
    const Place out = outward(from, to);
    const double thin = thin_line(text_);
    canvas_.line(from.x, from.y, to.x, to.y, thin, ink);
    const Ticks ticks = ticks_between(low, box_.value(coordinate, high), length / (room * text_));
    const double widest = widest_label(canvas_, ticks, text_);
    const double reach = label_distance * text_ + std::abs(out.x) * widest / 2;
    for (const double value : ticks.values) {
      place[coordinate] = box_.drawn(coordinate, value);
      const Place tick = on_page(place);
      const Place end = tick + tick_length * text_ * out;
      canvas_.line(tick.x, tick.y, end.x, end.y, thin, ink);
      draw_label(tick + reach * out, ticks.label(value));
    }
    const double beyond = reach + std::abs(out.x) * widest / 2 + name_distance * text_ / 1.5;
    draw_label(0.5 * (from + to) + beyond * out, names[coordinate]);
  }

  void draw_label(Place centre, const std::string& label) {
    const Font font{text_};
    const double half = canvas_.text_width(label, font) / 2 + 0.15 * text_;
    const double tall = 0.5 * text_;
    for (const Place& other : taken_) {
      if (std::abs(other.x - centre.x) <
              half + half_of_[static_cast<std::size_t>(&other - taken_.data())] &&
          std::abs(other.y - centre.y) < 2 * tall) {
        return;
      }
    }
    reach_.left = std::min(reach_.left, centre.x - half);
    reach_.right = std::max(reach_.right, centre.x + half);
    taken_.push_back(centre);
    half_of_.push_back(half);
    canvas_.text(centre.x, centre.y, label, font, {0.5, 0.5});
  }

  Canvas& canvas_;
  const Projection& projection_;
  const Area& area_;
  const Box& box_;
  double text_;
  std::vector<Place> taken_;  ///< middles of the labels drawn
  std::vector<double> half_of_;
  Reach reach_{INFINITY, 0};
};

}  // namespace

void draw_box_behind(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                     double text) {
  // The corner nearest to the eye; the three edges that meet there are in front.
  unsigned nearest = 0;
  for (unsigned corner = 1; corner < 8; ++corner) {
    const Vector& toward = projection.view.toward;
    if (dot(toward, box.corner(corner)) > dot(toward, box.corner(nearest))) nearest = corner;
  }
  for (unsigned corner = 0; corner < 8; ++corner) {
    for (const unsigned bit : {1U, 2U, 4U}) {
      const unsigned other = corner | bit;
      if (other == corner || corner == nearest || other == nearest) continue;
      const Vector from = box.corner(corner);
      const Vector to = box.corner(other);
      canvas.line(area.x + projection.x(from), area.y + projection.y(from),
                  area.x + projection.x(to), area.y + projection.y(to), thin_line(text), back_line);
    }
  }
}

Reach draw_box_axes(Canvas& canvas, const Projection& projection, const Area& area, const Box& box,
                    double text) {
  BoxAxes axes(canvas, projection, area, box, text);
  for (std::size_t coordinate = 0; coordinate < 3; ++coordinate) axes.draw_axis(coordinate);
  return axes.reach();
}

}  // namespace p3dgrid::tool::plot
