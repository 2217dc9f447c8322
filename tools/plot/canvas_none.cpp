// Replaces canvas_cairo.cpp in builds without cairo.
#include "failure.hpp"
#include "plot/canvas.hpp"

namespace p3dgrid::tool::plot {

std::unique_ptr<Canvas> make_canvas(int, int) {
  throw Unusable(
      "this p3dgrid cannot draw: it was built without the library cairo (on Debian "
      "libcairo2-dev); 'p3dgrid tecplot' writes files that other programs draw");
}

}  // namespace p3dgrid::tool::plot
