#include "plot/ticks.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

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
    text.replace(exponent, std::string::npos, std::to_string(std::stoi(text.substr(exponent))));
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

}  // namespace p3dgrid::tool::plot
