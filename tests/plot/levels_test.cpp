#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "plot/scale.hpp"

namespace p3dgrid::tool::plot {
namespace {

std::vector<Surface> surface_of(const std::vector<float>& values) {
  Surface surface;
  surface.columns = values.size();
  surface.rows = 1;
  surface.points.resize(values.size());
  surface.absent.resize(values.size());
  surface.values = values;
  return {surface};
}

double lightness_of(Colour colour) {
  return 0.2126 * (colour >> 16U & 0xffU) + 0.7152 * (colour >> 8U & 0xffU) +
         0.0722 * (colour & 0xffU);
}

TEST(MapColour, LightnessIsMonotonic) {
  for (int n = 0; n < 100; ++n) {
    EXPECT_LT(lightness_of(map_colour(n / 100.0)), lightness_of(map_colour((n + 1) / 100.0)) + 0.5);
  }
  EXPECT_LT(lightness_of(map_colour(0)), 40);
  EXPECT_GT(lightness_of(map_colour(1)), 200);
}

TEST(Levels, BandsCoverTheValuesInRoundSteps) {
  for (const float range : {1.0F, 1.7F, 2.3F, 4.1F, 7.9F, 9.99F, 1e-20F, 3e30F}) {
    const auto levels = levels_of(surface_of({0.1F * range, 1.1F * range}));
    ASSERT_TRUE(levels);
    EXPECT_GE(levels->colours.size(), 8U) << range;
    EXPECT_LE(levels->colours.size(), 27U) << range;
    EXPECT_LE(levels->low, levels->smallest * 1.000001);
    EXPECT_GE(levels->high(), levels->largest * 0.999999);
    EXPECT_GE(levels->ticks.values.size(), 3U) << range;
    for (const double tick : levels->ticks.values) {
      const double bands = (tick - levels->low) / levels->step;
      EXPECT_NEAR(bands, std::round(bands), 1e-6) << range;
    }
  }
}

TEST(Levels, ValuesHaveTheColourOfTheirBand) {
  const auto levels = levels_of(surface_of({0, 10}));
  ASSERT_TRUE(levels);
  for (std::size_t band = 0; band < levels->colours.size(); ++band) {
    const double middle = levels->low + (static_cast<double>(band) + 0.5) * levels->step;
    EXPECT_EQ(levels->colour_of(middle), levels->colours[band]);
  }
  EXPECT_EQ(levels->colour_of(-1e9), levels->colours.front());
  EXPECT_EQ(levels->colour_of(1e9), levels->colours.back());
}

TEST(Levels, ValuesThatAreNotFiniteOrAbsentAreIgnored) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  auto surfaces = surface_of({nan, INFINITY, 1, 2, 300});
  surfaces[0].absent[4] = 1;
  const auto levels = levels_of(surfaces);
  ASSERT_TRUE(levels);
  EXPECT_EQ(levels->smallest, 1);
  EXPECT_EQ(levels->largest, 2);
  EXPECT_FALSE(levels->all_finite);
  EXPECT_TRUE(levels_of(surface_of({1, 2}))->all_finite);
  EXPECT_FALSE(levels_of(surface_of({nan, INFINITY})));
}

TEST(Levels, AConstantHasOneBand) {
  for (const float value : {0.0F, 0.7F, -3e30F}) {
    const float rounded = value == 0 ? 0 : std::nextafter(value, 1e38F);
    const auto levels = levels_of(surface_of({value, rounded}));
    ASSERT_TRUE(levels);
    EXPECT_EQ(levels->colours.size(), 1U) << value;
  }
}

}  // namespace
}  // namespace p3dgrid::tool::plot
