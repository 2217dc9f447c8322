#include "plot/ticks.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace p3dgrid::tool::plot {
namespace {

// Beyond these powers of ten digits become unreadable without an exponent.
constexpr int largest_plain_power = 5;
constexpr int smallest_plain_power = -5;

// Of a step that still tells neighbours apart.
constexpr double furthest_multiple = 1e12;

int power_of(double value) {
  return static_cast<int>(std::floor(std::log10(std::abs(value)) + 1e-9));
}

std::string printed(const char* format, int decimals, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, decimals, value);
  return text;
}

/// "1.5e+06" as "1.5e6".
std::string short_exponent(const std::string& text) {
  const std::size_t e = text.find('e');
  return text.substr(0, e) + "e" + std::to_string(std::stoi(text.substr(e + 1)));
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
  const int power = power_of(largest);
  if (power <= largest_plain_power && smallest >= smallest_plain_power) {
    return with_minus_sign(printed("%.*f", std::max(0, -smallest), value));
  }
  const int decimals = std::clamp(power_of(value) - smallest, 0, 15);
  return with_minus_sign(short_exponent(printed("%.*e", decimals, value)));
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
  // Neighbours must be different numbers; a range that is far from 0 and short has no such.
  const double furthest = std::max(std::abs(first), std::abs(last));
  if (!(step > 0) || !(furthest < furthest_multiple)) return ticks;
  // Whole numbers up to the furthest multiple are exact.
  // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter): none is skipped, none comes twice
  for (double n = first; n <= last; ++n) ticks.values.push_back(n * step);
  return ticks;
}

Ticks ticks_between(double low, double high, double most) {
  return multiples_between(low, high, round_step((high - low) / std::max(1.0, most)));
}

}  // namespace p3dgrid::tool::plot
