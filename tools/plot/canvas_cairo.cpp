#include <cairo.h>

#include <cmath>
#include <new>

#include "failure.hpp"
#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr const char* font_family = "sans-serif";

void require(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw Failure(ExitStatus::unusable, cairo_status_to_string(status));
}

void set_colour(cairo_t* pen, Colour colour) {
  const auto part = [colour](unsigned shift) {
    return static_cast<double>(colour >> shift & 0xffU) / 255;
  };
  cairo_set_source_rgb(pen, part(16), part(8), part(0));
}

void set_font(cairo_t* pen, const Font& font) {
  cairo_select_font_face(pen, font_family, CAIRO_FONT_SLANT_NORMAL,
                         font.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(pen, font.size);
  set_colour(pen, font.colour);
}

}  // namespace

Canvas::Canvas(int width, int height) : page_(nullptr, cairo_destroy) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  page_.reset(cairo_create(surface));
  cairo_surface_destroy(surface);  // the page holds another reference
  set_colour(page_.get(), white);
  cairo_paint(page_.get());
}

double Canvas::text_width(const std::string& text, const Font& font) {
  set_font(page_.get(), font);
  cairo_text_extents_t extents;
  cairo_text_extents(page_.get(), text.c_str(), &extents);
  return extents.x_advance;
}

// Positioned by the height of digits, so that labels in a row share a baseline.
void Canvas::text(double x, double y, const std::string& text, const Font& font, Anchor anchor) {
  const double width = text_width(text, font);
  const double height = 0.73 * font.size;
  cairo_move_to(page_.get(), x - anchor.across * width, y + anchor.down * height);
  cairo_show_text(page_.get(), text.c_str());
}

void Canvas::line(double x0, double y0, double x1, double y1, double width, Colour colour) {
  set_colour(page_.get(), colour);
  cairo_set_line_width(page_.get(), width);
  cairo_move_to(page_.get(), x0, y0);
  cairo_line_to(page_.get(), x1, y1);
  cairo_stroke(page_.get());
}

void Canvas::fill(double x, double y, double width, double height, Colour colour) {
  set_colour(page_.get(), colour);
  cairo_rectangle(page_.get(), x, y, width, height);
  cairo_fill(page_.get());
}

void Canvas::frame(double x, double y, double width, double height, double line_width,
                   Colour colour) {
  set_colour(page_.get(), colour);
  cairo_set_line_width(page_.get(), line_width);
  cairo_rectangle(page_.get(), x, y, width, height);
  cairo_stroke(page_.get());
}

void Canvas::image(int x, int y, int width, int height, std::vector<std::uint32_t> pixels) {
  cairo_surface_t* picture = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32, width, height,
      width * static_cast<int>(sizeof(std::uint32_t)));
  cairo_set_source_surface(page_.get(), picture, x, y);
  cairo_paint(page_.get());
  cairo_set_source_rgb(page_.get(), 0, 0, 0);  // drops the reference to the picture
  cairo_surface_destroy(picture);
}

void Canvas::write(const std::string& path) {
  require(cairo_status(page_.get()));
  require(cairo_surface_write_to_png(cairo_get_target(page_.get()), path.c_str()));
}

void require_drawing() {}

}  // namespace p3dgrid::tool::plot
