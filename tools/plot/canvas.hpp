#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace p3dgrid::tool::plot {

/// Red, green and blue, 8 bits each, red highest.
using Colour = std::uint32_t;

inline constexpr Colour white = 0xffffff;
inline constexpr Colour ink = 0x1a1a1a;         ///< text and frames
inline constexpr Colour pale_ink = 0x606060;    ///< secondary text
inline constexpr Colour back_line = 0xc8c8c8;   ///< edges of the box behind the surfaces
inline constexpr Colour no_number = 0xb4b4b4;   ///< cells without a finite value
inline constexpr Colour block_edge = 0x747474;  ///< outlines of blocks on a coloured surface

struct Font {
  double size = 16;
  bool bold = false;
  Colour colour = ink;
};

/// Alignment of text with its position; 0.5 centres it.
struct Anchor {
  double across = 0;  ///< 0: to the right of the position, 1: to the left
  double down = 0;    ///< 0: above the position, 1: below
};

/// A white page to draw on, in pixels right and down from the top left corner.
class Canvas {
 public:
  virtual ~Canvas() = default;

  [[nodiscard]] virtual double text_width(const std::string& text, const Font& font) = 0;
  virtual void text(double x, double y, const std::string& text, const Font& font,
                    Anchor anchor) = 0;
  virtual void line(double x0, double y0, double x1, double y1, double width, Colour colour) = 0;
  virtual void fill(double x, double y, double width, double height, Colour colour) = 0;
  virtual void frame(double x, double y, double width, double height, double line_width,
                     Colour colour) = 0;
  /// Draws a picture in the format of `Raster::reduced`.
  virtual void image(int x, int y, int width, int height, std::vector<std::uint32_t> pixels) = 0;

  /// Writes the page as a PNG file. Throws a Failure that does not name the file.
  virtual void write(const std::string& path) = 0;
};

/// An empty page. Throws a Failure if the program was built without cairo.
[[nodiscard]] std::unique_ptr<Canvas> make_canvas(int width, int height);

}  // namespace p3dgrid::tool::plot
