#include <cairo.h>

#include <new>

#include "failure.hpp"
#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr const char* font_family = "sans-serif";

void require(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw Unusable(cairo_status_to_string(status));
}

class CairoCanvas : public Canvas {
 public:
  CairoCanvas(int width, int height)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height),
                 cairo_surface_destroy),
        pen_(cairo_create(surface_.get()), cairo_destroy) {
    set_colour(white);
    cairo_paint(pen_.get());
  }

  double text_width(const std::string& text, const Font& font) override {
    cairo_select_font_face(pen_.get(), font_family, CAIRO_FONT_SLANT_NORMAL,
                           font.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen_.get(), font.size);
    cairo_text_extents_t extents;
    cairo_text_extents(pen_.get(), text.c_str(), &extents);
    return extents.x_advance;
  }

  // Positioned by the height of digits, so that labels in a row share a baseline.
  void text(double x, double y, const std::string& text, const Font& font, Anchor anchor) override {
    const double width = text_width(text, font);
    const double height = 0.73 * font.size;
    set_colour(font.colour);
    cairo_move_to(pen_.get(), x - anchor.across * width, y + anchor.down * height);
    cairo_show_text(pen_.get(), text.c_str());
  }

  void line(double x0, double y0, double x1, double y1, double width, Colour colour) override {
    cairo_move_to(pen_.get(), x0, y0);
    cairo_line_to(pen_.get(), x1, y1);
    stroke(width, colour);
  }

  void fill(double x, double y, double width, double height, Colour colour) override {
    cairo_rectangle(pen_.get(), x, y, width, height);
    set_colour(colour);
    cairo_fill(pen_.get());
  }

  void frame(double x, double y, double width, double height, double line_width,
             Colour colour) override {
    cairo_rectangle(pen_.get(), x, y, width, height);
    stroke(line_width, colour);
  }

  void image(int x, int y, int width, int height, std::vector<std::uint32_t> pixels) override {
    const Surface picture(cairo_image_surface_create_for_data(
                              reinterpret_cast<unsigned char*>(pixels.data()), CAIRO_FORMAT_ARGB32,
                              width, height, width * static_cast<int>(sizeof(std::uint32_t))),
                          cairo_surface_destroy);
    cairo_set_source_surface(pen_.get(), picture.get(), x, y);
    cairo_paint(pen_.get());
    set_colour(white);  // drops the reference to the picture
  }

  void write(const std::string& path) override {
    require(cairo_status(pen_.get()));
    require(cairo_surface_write_to_png(surface_.get(), path.c_str()));
  }

 private:
  using Surface = std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)>;

  void set_colour(Colour colour) {
    const auto part = [colour](unsigned shift) {
      return static_cast<double>(colour >> shift & 0xffU) / 255;
    };
    cairo_set_source_rgb(pen_.get(), part(16), part(8), part(0));
  }

  void stroke(double width, Colour colour) {
    set_colour(colour);
    cairo_set_line_width(pen_.get(), width);
    cairo_stroke(pen_.get());
  }

  Surface surface_;
  std::unique_ptr<cairo_t, void (*)(cairo_t*)> pen_;
};

}  // namespace

std::unique_ptr<Canvas> make_canvas(int width, int height) {
  return std::make_unique<CairoCanvas>(width, height);
}

}  // namespace p3dgrid::tool::plot
