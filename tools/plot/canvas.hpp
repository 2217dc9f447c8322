#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "plot/colours.hpp"

namespace p3dgrid::tool::plot {

struct Font {
  double size = 16;
  bool bold = false;
  Colour colour = ink;
};

/// Where text stands relative to the place it is given: 0 begins or ends there, 0.5 is centred.
struct Anchor {
  double across = 0;  ///< 0 to the right of the place, 1 to the left of it
  double down = 0;    ///< 0 above the place, 1 below it
};

/// A white page to draw on, in pixels right and down from the top left corner.
class Canvas {
 public:
  Canvas(int width, int height);
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas();

  [[nodiscard]] double text_width(const std::string& text, const Font& font);
  void text(double x, double y, const std::string& text, const Font& font, Anchor anchor);
  /// Text that runs upward, centred at the place.
  void upward_text(double x, double y, const std::string& text, const Font& font);
  void line(double x0, double y0, double x1, double y1, double width, Colour colour);
  void fill(double x, double y, double width, double height, Colour colour);
  void frame(double x, double y, double width, double height, double line_width, Colour colour);
  /// A picture as `Raster::reduced` gives it.
  void image(int x, int y, int width, int height, std::vector<std::uint32_t> pixels);

  /// Writes the page as a PNG file. Throws a Failure that does not name the file.
  void write(const std::string& path);

 private:
  struct Page;
  std::unique_ptr<Page> page_;
};

/// Throws a Failure when the program was built without the library that draws.
void require_drawing();

}  // namespace p3dgrid::tool::plot
