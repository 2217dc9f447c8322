#include "plot/side_panel.hpp"

#include <algorithm>
#include <cmath>

#include "plot/axes.hpp"

namespace p3dgrid::tool::plot {
namespace {

// In sizes of the text.
constexpr double bar_width = 1.1;
constexpr double tick_length = 0.35;
constexpr double label_gap = 0.6;
constexpr double label_height = 1.8;  // of what names the bar, above it
constexpr double swatch_width = 1.6;
constexpr double line_height = 1.5;
constexpr double least_bar = 9.0;

std::string block_name(std::size_t block) {
  return "block " + std::to_string(block + 1);
}

}  // namespace

double SidePanel::width(Canvas& canvas, double text) const {
  if (levels) {
    const double labels = widest_label(canvas, levels->ticks, text);
    return std::max((bar_width + label_gap) * text + labels, canvas.text_width(label, {text}));
  }
  double widest = 0;
  for (const std::size_t block : blocks) {
    widest = std::max(widest, canvas.text_width(block_name(block), {text}));
  }
  return blocks.empty() ? 0 : (swatch_width + label_gap) * text + widest;
}

double SidePanel::least_height(double text) const {
  if (levels) return (least_bar + label_height) * text;
  return static_cast<double>(blocks.size()) * line_height * text;
}

void SidePanel::draw(Canvas& canvas, double x, double y, double height, double text) const {
  if (levels) {
    draw_bar(canvas, x, y, height, text);
  } else {
    draw_blocks(canvas, x, y, text);
  }
}

void SidePanel::draw_bar(Canvas& canvas, double x, double y, double height, double text) const {
  const double top = std::floor(y + label_height * text);
  const double bottom = std::floor(y + height);
  const double band = (bottom - top) / static_cast<double>(levels->colours.size());
  const double wide = std::floor(bar_width * text);
  canvas.text(x, y, label, {text}, {0, 1});
  for (std::size_t n = 0; n < levels->colours.size(); ++n) {
    const double upper = std::floor(bottom - static_cast<double>(n + 1) * band);
    const double lower = std::floor(bottom - static_cast<double>(n) * band);
    canvas.fill(x, upper, wide, lower - upper, levels->colours[n]);
  }
  const double thin = thin_line(text);
  canvas.frame(x - 0.5, top - 0.5, wide + 1, bottom - top + 1, thin, ink);
  const double per_value = (bottom - top) / (levels->high() - levels->low);
  for (const double value : levels->ticks.values) {
    const double at = std::floor(bottom - (value - levels->low) * per_value) - 0.5;
    canvas.line(x + wide, at, x + wide + tick_length * text, at, thin, ink);
    canvas.text(x + wide + label_gap * text, at, levels->ticks.label(value), {text}, {0, 0.5});
  }
}

void SidePanel::draw_blocks(Canvas& canvas, double x, double y, double text) const {
  double middle = y + 0.5 * line_height * text;
  for (const std::size_t block : blocks) {
    canvas.line(x, middle, x + swatch_width * text, middle, text / 6, block_colour(block));
    canvas.text(x + (swatch_width + label_gap) * text, middle, block_name(block), {text}, {0, 0.5});
    middle += line_height * text;
  }
}

}  // namespace p3dgrid::tool::plot
