// Replaces canvas_cairo.cpp in builds without cairo.
#include "failure.hpp"
#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {

Canvas::Canvas(int, int) : page_(nullptr, nullptr) {
  require_drawing();
}

double Canvas::text_width(const std::string&, const Font&) {
  return 0;
}

void Canvas::text(double, double, const std::string&, const Font&, Anchor) {}
void Canvas::line(double, double, double, double, double, Colour) {}
void Canvas::fill(double, double, double, double, Colour) {}
void Canvas::frame(double, double, double, double, double, Colour) {}
void Canvas::image(int, int, int, int, std::vector<std::uint32_t>) {}
void Canvas::write(const std::string&) {}

void require_drawing() {
  throw Failure(ExitStatus::unusable,
                "this p3dgrid cannot draw: it was built without the library cairo (on Debian "
                "libcairo2-dev); 'p3dgrid tecplot' writes files that other programs draw");
}

}  // namespace p3dgrid::tool::plot
