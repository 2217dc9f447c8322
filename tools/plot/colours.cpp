#include "plot/colours.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace p3dgrid::tool::plot {
namespace {

using Rgb = std::array<double, 3>;

/// Linear red, green and blue of a colour in Oklab, the space in which equal distances look equal.
Rgb linear_rgb(double lightness, double a, double b) {
  const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
          -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

bool displayable(const Rgb& colour) {
  return std::ranges::all_of(colour, [](double part) { return part >= 0 && part <= 1; });
}

Colour display(double linear) {
  const double part = std::clamp(linear, 0.0, 1.0);
  const double encoded = part <= 0.0031308 ? 12.92 * part : 1.055 * std::pow(part, 1 / 2.4) - 0.055;
  return static_cast<Colour>(std::lround(255 * encoded));
}

}  // namespace

// Lightness and hue run evenly; the colour is as strong as a screen can show, up to a limit.
Colour map_colour(double share) {
  const double t = std::clamp(share, 0.0, 1.0);
  const double lightness = 0.27 + 0.66 * t;
  const double hue = (305 - 200 * t) * std::numbers::pi / 180;
  double strength = 0.13;
  Rgb colour{};
  do {
    colour = linear_rgb(lightness, strength * std::cos(hue), strength * std::sin(hue));
    strength -= 0.002;
  } while (!displayable(colour) && strength > 0);
  return display(colour[0]) << 16U | display(colour[1]) << 8U | display(colour[2]);
}

// Told apart also by those who see fewer colours, and dark enough for thin lines on white.
Colour block_colour(std::size_t block) {
  constexpr std::array<Colour, 7> colours = {0x1f4e9c, 0xc44e00, 0x007a5a, 0xa02c78,
                                             0x3a8fc8, 0x8a6d00, 0x505050};
  return colours[block % colours.size()];
}

Colour dimmed(Colour colour, double light) {
  Colour result = 0;
  for (const unsigned shift : {16U, 8U, 0U}) {
    const auto part = static_cast<double>(colour >> shift & 0xffU);
    result |= static_cast<Colour>(std::lround(part * std::clamp(light, 0.0, 1.0))) << shift;
  }
  return result;
}

}  // namespace p3dgrid::tool::plot
