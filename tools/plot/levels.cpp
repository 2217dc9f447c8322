#include "plot/levels.hpp"

#include <algorithm>
#include <cmath>

#include "range.hpp"

namespace p3dgrid::tool::plot {
namespace {

constexpr double most_ticks = 8;
constexpr double few_ticks = 5;

// Values that differ by less are the same number in single precision, rounded differently.
constexpr double least_difference = 2e-6;

template <class Take>
void for_each_value(const std::vector<Surface>& surfaces, Take take) {
  for (const Surface& surface : surfaces) {
    for (std::size_t p = 0; p < surface.values.size(); ++p) {
      if (surface.absent[p] == 0) take(surface.values[p]);
    }
  }
}

/// One band around a value that is the same everywhere.
Levels one_level(Levels levels) {
  const double middle = (levels.smallest + levels.largest) / 2;
  levels.step = middle != 0 ? std::abs(middle) * 1e-3 : 1;
  levels.low = middle - levels.step / 2;
  levels.ticks = {levels.step, {middle}};
  levels.colours = {map_colour(0.5)};
  return levels;
}

/// Bands between two ticks: few where ticks are many, and limits of few digits.
double bands_per_tick(double range, double tick_step) {
  if (range > few_ticks * tick_step) return 2;
  const double power = std::pow(10.0, std::floor(std::log10(tick_step) + 1e-9));
  return std::abs(tick_step / power - 2) < 0.5 ? 4 : 5;
}

}  // namespace

Colour Levels::colour_of(double value) const {
  const double band = std::floor((value - low) / step);
  const double last = static_cast<double>(colours.size()) - 1;
  return colours[static_cast<std::size_t>(std::clamp(band, 0.0, last))];
}

std::optional<Levels> levels_of(const std::vector<Surface>& surfaces) {
  Range range;
  for_each_value(surfaces, [&](float value) {
    if (std::isfinite(value)) range.include(value);
  });
  if (range.empty()) return std::nullopt;
  Levels levels;
  levels.smallest = range.low;
  levels.largest = range.high;
  const double largest = std::max(std::abs(levels.smallest), std::abs(levels.largest));
  if (levels.largest - levels.smallest <= least_difference * largest) return one_level(levels);

  const double tick_step = round_step((levels.largest - levels.smallest) / most_ticks);
  levels.step = tick_step / bands_per_tick(levels.largest - levels.smallest, tick_step);
  const double first = std::floor(levels.smallest / levels.step + 1e-6);
  const double end = std::ceil(levels.largest / levels.step - 1e-6);
  levels.low = first * levels.step;
  levels.ticks = multiples_between(levels.low, end * levels.step, tick_step);
  const auto bands = static_cast<std::size_t>(std::max(1.0, end - first));
  for (std::size_t band = 0; band < bands; ++band) {
    const double share = (static_cast<double>(band) + 0.5) / static_cast<double>(bands);
    levels.colours.push_back(map_colour(share));
  }
  return levels;
}

bool lacks_values(const std::vector<Surface>& surfaces) {
  bool lacking = false;
  for_each_value(surfaces, [&](float value) { lacking = lacking || !std::isfinite(value); });
  return lacking;
}

}  // namespace p3dgrid::tool::plot
