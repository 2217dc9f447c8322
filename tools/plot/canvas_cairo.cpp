#include <cairo.h>

#include <cmath>
#include <new>
#include <numbers>

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

struct Canvas::Page {
  cairo_surface_t* surface;
  cairo_t* pen;
};

Canvas::Canvas(int width, int height)
    : page_(std::make_unique<Page>(
          Page{cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), nullptr})) {
  page_->pen = cairo_create(page_->surface);
  set_colour(page_->pen, white);
  cairo_paint(page_->pen);
}

Canvas::~Canvas() {
  cairo_destroy(page_->pen);
  cairo_surface_destroy(page_->surface);
}

double Canvas::text_width(const std::string& text, const Font& font) {
  set_font(page_->pen, font);
  cairo_text_extents_t extents;
  cairo_text_extents(page_->pen, text.c_str(), &extents);
  return extents.x_advance;
}

// Placed by the height of the font's digits, so that labels in a row stand on one line.
void Canvas::text(double x, double y, const std::string& text, const Font& font, Anchor anchor) {
  const double width = text_width(text, font);
  const double height = 0.73 * font.size;
  cairo_move_to(page_->pen, x - anchor.across * width, y + anchor.down * height);
  cairo_show_text(page_->pen, text.c_str());
}

void Canvas::upward_text(double x, double y, const std::string& text, const Font& font) {
  cairo_save(page_->pen);
  cairo_translate(page_->pen, x, y);
  cairo_rotate(page_->pen, -std::numbers::pi / 2);
  this->text(0, 0, text, font, {0.5, 0.5});
  cairo_restore(page_->pen);
}

void Canvas::line(double x0, double y0, double x1, double y1, double width, Colour colour) {
  set_colour(page_->pen, colour);
  cairo_set_line_width(page_->pen, width);
  cairo_move_to(page_->pen, x0, y0);
  cairo_line_to(page_->pen, x1, y1);
  cairo_stroke(page_->pen);
}

void Canvas::fill(double x, double y, double width, double height, Colour colour) {
  set_colour(page_->pen, colour);
  cairo_rectangle(page_->pen, x, y, width, height);
  cairo_fill(page_->pen);
}

void Canvas::frame(double x, double y, double width, double height, double line_width,
                   Colour colour) {
  set_colour(page_->pen, colour);
  cairo_set_line_width(page_->pen, line_width);
  cairo_rectangle(page_->pen, x, y, width, height);
  cairo_stroke(page_->pen);
}

void Canvas::image(int x, int y, int width, int height, std::vector<std::uint32_t> pixels) {
  cairo_surface_t* picture = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32, width, height,
      width * static_cast<int>(sizeof(std::uint32_t)));
  cairo_set_source_surface(page_->pen, picture, x, y);
  cairo_paint(page_->pen);
  cairo_set_source_rgb(page_->pen, 0, 0, 0);  // lets go of the picture
  cairo_surface_destroy(picture);
}

void Canvas::write(const std::string& path) {
  require(cairo_status(page_->pen));
  require(cairo_surface_write_to_png(page_->surface, path.c_str()));
}

void require_drawing() {}

}  // namespace p3dgrid::tool::plot
