#include "plot/scale.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>

namespace p3dgrid::tool::plot {
namespace {

// Labels beyond these powers of ten have an exponent.
constexpr int largest_plain_power = 5;
constexpr int smallest_plain_power = -5;

// Larger multiples of a step are not distinct.
constexpr double furthest_multiple = 1e12;

int power_of(double value) {
  return static_cast<int>(std::floor(std::log10(std::abs(value)) + 1e-9));
}

constexpr double most_ticks = 8;
constexpr double few_ticks = 5;

// A relative difference within the rounding errors of single precision.
constexpr double least_difference = 2e-6;

/// Sets one band around a constant value.
void set_one_band(Levels& levels) {
  const double middle = (levels.smallest + levels.largest) / 2;
  levels.step = middle != 0 ? std::abs(middle) * 1e-3 : 1;
  levels.low = middle - levels.step / 2;
  levels.ticks = {levels.step, {middle}};
  levels.colours = {map_colour(0.5)};
}

/// Bands between two ticks: few if there are many ticks, with limits of few digits.
double bands_per_tick(double range, double tick_step) {
  if (range > few_ticks * tick_step) return 2;
  const double power = std::pow(10.0, power_of(tick_step));
  return std::abs(tick_step / power - 2) < 0.5 ? 4 : 5;
}

void set_bands(Levels& levels) {
  const double range = levels.largest - levels.smallest;
  const double tick_step = round_step(range / most_ticks);
  levels.step = tick_step / bands_per_tick(range, tick_step);
  const double first = std::floor(levels.smallest / levels.step + 1e-6);
  const double end = std::ceil(levels.largest / levels.step - 1e-6);
  levels.low = first * levels.step;
  levels.ticks = multiples_between(levels.low, end * levels.step, tick_step);
  const auto bands = static_cast<std::size_t>(std::max(1.0, end - first));
  for (std::size_t band = 0; band < bands; ++band) {
    const double centre = static_cast<double>(band) + 0.5;
    levels.colours.push_back(map_colour(centre / static_cast<double>(bands)));
  }
}

using Rgb = std::array<double, 3>;

/// Linear red, green and blue of a colour in the perceptually uniform space Oklab.
Rgb linear_rgb(double lightness, double a, double b) {
  const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
          -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

/// Encodes a linear component for sRGB.
Colour encoded(double linear) {
  const double part = std::clamp(linear, 0.0, 1.0);
  const double gamma = part <= 0.0031308 ? 12.92 * part : 1.055 * std::pow(part, 1 / 2.4) - 0.055;
  return static_cast<Colour>(std::lround(255 * gamma));
}

}  // namespace

std::string with_minus_sign(std::string text) {
  for (std::size_t at = text.find('-'); at != std::string::npos; at = text.find('-', at)) {
    text.replace(at, 1, "\u2212");
  }
  return text;
}

std::string Ticks::label(double value) const {
  if (std::abs(value) < step / 2) return "0";
  const int smallest = power_of(step);
  double largest = step;
  for (const double other : values) largest = std::max(largest, std::abs(other));
  const bool plain = power_of(largest) <= largest_plain_power && smallest >= smallest_plain_power;
  const int decimals =
      plain ? std::max(0, -smallest) : std::clamp(power_of(value) - smallest, 0, 15);
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, plain ? "%.*f" : "%.*e", decimals, value);
  std::string text = buffer;
  if (!plain) {  // "1.5e+06" becomes "1.5e6"
    const std::size_t exponent = text.find('e') + 1;
    const int power = std::stoi(text.substr(exponent));
    text.erase(exponent);
    text += std::to_string(power);
  }
  return with_minus_sign(text);
}

double round_step(double least) {
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

Ticks multiples_between(double low, double high, double step) {
  Ticks ticks{step, {}};
  const double slack = 1e-6 * step;
  const double first = std::ceil((low - slack) / step);
  const double last = std::floor((high + slack) / step);
  // In a short range far from 0, neighbours are not distinct.
  const double furthest = std::max(std::abs(first), std::abs(last));
  if (!(step > 0) || !(furthest < furthest_multiple)) return ticks;
  // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter): these whole numbers are exact
  for (double n = first; n <= last; ++n) ticks.values.push_back(n * step);
  return ticks;
}

Ticks ticks_between(double low, double high, double most) {
  return multiples_between(low, high, round_step((high - low) / std::max(1.0, most)));
}

// Lightness and hue are linear in the share; chroma is as high as a screen can show, up to a limit.
Colour map_colour(double share) {
  const double t = std::clamp(share, 0.0, 1.0);
  const double lightness = 0.27 + 0.66 * t;
  const double hue = (305 - 200 * t) * std::numbers::pi / 180;
  double chroma = 0.13;
  Rgb colour{};
  const auto displayable = [](double part) { return part >= 0 && part <= 1; };
  do {
    colour = linear_rgb(lightness, chroma * std::cos(hue), chroma * std::sin(hue));
    chroma -= 0.002;
  } while (!std::ranges::all_of(colour, displayable) && chroma > 0);
  return encoded(colour[0]) << 16U | encoded(colour[1]) << 8U | encoded(colour[2]);
}

Colour Levels::colour_of(double value) const {
  const double band = std::floor((value - low) / step);
  const double last = static_cast<double>(colours.size()) - 1;
  return colours[static_cast<std::size_t>(std::clamp(band, 0.0, last))];
}

std::optional<Levels> levels_of(const std::vector<Surface>& surfaces) {
  Levels levels;
  Range range;
  const auto include = [&](float value) {
    if (std::isfinite(value)) {
      range.include(value);
    } else {
      levels.all_finite = false;
    }
  };
  for (const Surface& surface : surfaces) {
    for (std::size_t p = 0; p < surface.values.size(); ++p) {
      if (surface.absent[p] == 0) include(surface.values[p]);
    }
    if (surface.cell_values.empty()) continue;
    surface.for_each_cell([&](const Cell& cell) { include(surface.cell_values[cell.number]); });
  }
  if (range.empty()) return std::nullopt;
  levels.smallest = range.low;
  levels.largest = range.high;
  const double magnitude = std::max(std::abs(levels.smallest), std::abs(levels.largest));
  const bool constant = levels.largest - levels.smallest <= least_difference * magnitude;
  constant ? set_one_band(levels) : set_bands(levels);
  return levels;
}

}  // namespace p3dgrid::tool::plot
