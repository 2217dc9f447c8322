#include "plot/page.hpp"

#include <algorithm>
#include <cmath>

#include "plot/canvas.hpp"
#include "plot/words.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr double text_per_width = 1.0 / 62;
constexpr double tallest = 0.72;  // of the surfaces, in largest widths of the page
constexpr double narrowest = 0.6;
constexpr std::size_t most_blocks_listed = 12;

// In sizes of the text.
constexpr double margin = 1.0;
constexpr double title_size = 1.25;
constexpr double remark_size = 0.9;
constexpr double line_height = 1.45;
constexpr double side_gap = 1.5;
constexpr double padding = 0.8;  // around the surfaces, inside their area
constexpr double name_beside = 2.4;
constexpr double flat_bottom = 3.2;
constexpr double box_left = 4.0;
constexpr double box_right = 2.2;
constexpr double box_bottom = 1.8;
constexpr double line_width = 1.0 / 36;
constexpr double least_line_distance = 1.0 / 7;

/// What a view along its direction spans, in grid units.
struct Span {
  double left = INFINITY;
  double right = -INFINITY;
  double bottom = INFINITY;
  double top = -INFINITY;
};

Span span_of(const Picture& picture) {
  Span span;
  for (unsigned corner = 0; corner < 8; ++corner) {
    const double right = dot(picture.view.right, picture.box.corner(corner));
    const double up = dot(picture.view.up, picture.box.corner(corner));
    span.left = std::min(span.left, right);
    span.right = std::max(span.right, right);
    span.bottom = std::min(span.bottom, up);
    span.top = std::max(span.top, up);
  }
  return span;
}

SidePanel panel_of(const Picture& picture) {
  SidePanel panel;
  if (!picture.bar_label.empty()) {
    panel.levels = levels_of(picture.surfaces);
    panel.label = picture.bar_label;
    return panel;
  }
  for (const Surface& surface : picture.surfaces) {
    if (panel.blocks.empty() || panel.blocks.back() != surface.block) {
      panel.blocks.push_back(surface.block);
    }
  }
  if (panel.blocks.size() < 2 || panel.blocks.size() > most_blocks_listed) panel.blocks.clear();
  return panel;
}

/// Sets scale and size of the surfaces for the room that is left beside them.
void fit(Page& page, const Picture& picture, double beside) {
  const Span span = span_of(picture);
  const double wide = span.right - span.left;
  const double tall = span.top - span.bottom;
  const double pad = padding * page.text;
  Projection& projection = page.projection;
  projection.scale = std::min(wide > 0 ? (picture.width - beside - 2 * pad) / wide : INFINITY,
                              tall > 0 ? (tallest * picture.width - 2 * pad) / tall : INFINITY);
  projection.left = span.left - pad / projection.scale;
  projection.top = span.top + pad / projection.scale;
  projection.middle = (dot(picture.view.toward, picture.box.corner(0)) +
                       dot(picture.view.toward, picture.box.corner(7))) /
                      2;
  page.area.width = static_cast<int>(std::ceil(wide * projection.scale + 2 * pad));
  page.area.height = static_cast<int>(std::ceil(tall * projection.scale + 2 * pad));
}

/// Places from left to right: axis labels, surfaces, panel.
void place_across(Page& page, const Picture& picture, Canvas& scratch) {
  const double text = page.text;
  const bool flat = picture.view.plane.has_value();
  const double panel = page.panel.width(scratch, text);
  double left = (margin + box_left) * text;
  double right =
      (flat ? 0 : box_right * text) + (panel > 0 ? side_gap * text + panel : 0) + margin * text;
  fit(page, picture, left + right);
  // Once more, with the room that the labels turn out to need.
  if (flat) {
    const Ticks ticks = ticks_up(page.projection, page.area, picture.box, text);
    left = (margin + name_beside) * text + widest_label(scratch, ticks, text);
  } else {
    page.area.x = 0;
    const Reach reach = draw_box_axes(scratch, page.projection, page.area, picture.box, text);
    left = std::max(left, margin * text - reach.left);
    right += std::max(0.0, reach.right - page.area.width - box_right * text);
  }
  fit(page, picture, left + right);
  const double needed = left + page.area.width + right;
  const double title = scratch.text_width(picture.title, page.title_font) + 2 * page.margin;
  const double least = std::clamp<double>(title, narrowest * picture.width, picture.width);
  page.width = static_cast<int>(std::ceil(std::max(needed, least)));
  page.area.x = static_cast<int>(left + std::max(0.0, least - needed) / 2);
  page.panel_x = page.area.x + page.area.width + right - panel - margin * text;
}

/// Places from top to bottom: title, remarks, surfaces, axis labels.
void place_down(Page& page, const Picture& picture, Canvas& scratch,
                const std::vector<std::string>& remarks) {
  const double text = page.text;
  const double room = page.width - 2 * page.margin;
  page.title = fitted(scratch, picture.title, page.title_font, room);
  page.remarks = wrapped(scratch, remarks, page.remark_font, room);
  page.line_distance = line_height * page.remark_font.size;
  page.area.y =
      static_cast<int>(page.margin + line_height * page.title_font.size +
                       static_cast<double>(page.remarks.size()) * page.line_distance + 0.4 * text);
  const bool flat = picture.view.plane.has_value();
  page.panel_height = std::max<double>(page.area.height, page.panel.least_height(text));
  const double surfaces = page.area.height + (flat ? flat_bottom : box_bottom) * text;
  page.height = page.area.y +
                static_cast<int>(std::ceil(std::max(surfaces, page.panel_height) + page.margin));
}

}  // namespace

Page lay_out(const Picture& picture) {
  Page page;
  page.text = picture.width * text_per_width;
  page.margin = margin * page.text;
  page.title_font = {title_size * page.text, true};
  page.remark_font = {remark_size * page.text, false, pale_ink};
  page.projection.view = picture.view;
  page.panel = panel_of(picture);
  Canvas scratch(1, 1);
  place_across(page, picture, scratch);
  page.style.levels = page.panel.levels;
  page.style.line_width = line_width * page.text;
  std::vector<std::string> remarks = picture.remarks;
  if (!page.style.levels) {
    page.style.every =
        lines_apart(picture.surfaces, page.projection, least_line_distance * page.text);
    if (page.style.every > 1) {
      remarks.push_back("1 of " + std::to_string(page.style.every) + " mesh lines drawn");
    }
  }
  place_down(page, picture, scratch, remarks);
  return page;
}

}  // namespace p3dgrid::tool::plot
