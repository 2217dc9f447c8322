#include "plot/raster.hpp"

#include <gmock/gmock.h>

namespace p3dgrid::tool::plot {
namespace {

constexpr std::uint32_t solid = 0xff000000;
constexpr int fine = Raster::fineness;

void fill(Raster& raster, Vertex a, Vertex b, Vertex c, Colour colour) {
  raster.triangle(a, b, c, [colour](double) { return colour; });
}

/// A rectangle of two triangles.
void fill(Raster& raster, double left, double top, double right, double bottom, double depth,
          Colour colour) {
  fill(raster, {left, top, depth}, {right, top, depth}, {right, bottom, depth}, colour);
  fill(raster, {left, top, depth}, {right, bottom, depth}, {left, bottom, depth}, colour);
}

/// A pixel of a picture of that width.
std::uint32_t pixel(const Raster& raster, int width, int x, int y) {
  return raster.reduced()[static_cast<std::size_t>(y * width + x)];
}

TEST(Raster, NearerTrianglesHideOthersInAnyOrder) {
  for (const bool near_first : {false, true}) {
    Raster raster(4, 4);
    const auto draw = [&](double depth, Colour colour) {
      fill(raster, 0, 0, 4 * fine, 4 * fine, depth, colour);
    };
    near_first ? draw(2, 0x112233) : draw(1, 0x445566);
    near_first ? draw(1, 0x445566) : draw(2, 0x112233);
    for (const std::uint32_t found : raster.reduced()) EXPECT_EQ(found, solid | 0x112233U);
  }
}

TEST(Raster, AdjacentTrianglesLeaveNoGap) {
  Raster raster(40, 40);
  // A fan of thin triangles, larger than the picture, whose centre lies between pixels.
  const Vertex middle{61.3, 58.9, 0};
  Vertex last{-200, -177, 0};
  for (int n = 1; n <= 4000; ++n) {
    const int side = (n - 1) / 1000;
    const double along = -200 + 0.4 * ((n - 1) % 1000 + 1);
    const Vertex next = side == 0   ? Vertex{along, -177, 0}
                        : side == 1 ? Vertex{200, along + 23, 0}
                        : side == 2 ? Vertex{-along, 223, 0}
                                    : Vertex{-200, -along + 23, 0};
    fill(raster, middle, last, next, 0xabcdef);
    last = next;
  }
  for (const std::uint32_t found : raster.reduced()) EXPECT_EQ(found, solid | 0xabcdefU);
}

TEST(Raster, EdgesAreSmooth) {
  Raster raster(2, 1);
  fill(raster, 0, 0, fine + 1.0, fine, 0, 0xff0000);
  EXPECT_EQ(pixel(raster, 2, 0, 0), 0xffff0000U);
  EXPECT_EQ(pixel(raster, 2, 1, 0), 0x55550000U);  // a third
}

TEST(Raster, ValuesAreInterpolatedLinearly) {
  Raster raster(30, 30);
  const double size = 30 * fine;
  double largest = 0;
  raster.triangle({0, 0, 0, 0}, {2 * size, 0, 0, 2}, {0, 2 * size, 0, 20}, [&](double value) {
    largest = std::max(largest, value);
    return white;
  });
  EXPECT_NEAR(largest, 11, 0.2);  // at the middle of the longest side
}

TEST(Raster, LinesAreVisibleOnTheirSurfaceAndHiddenBehindOthers) {
  Raster raster(9, 9);
  const double size = 9 * fine;
  fill(raster, 0, 0, size, size, 100, white);
  raster.line({0, 4.5 * fine, 100}, {size, 4.5 * fine, 100}, fine, 0);
  EXPECT_EQ(pixel(raster, 9, 4, 4), solid);
  raster.line({0, 1.5 * fine, 50}, {size, 1.5 * fine, 50}, fine, 0);
  EXPECT_EQ(pixel(raster, 9, 4, 1), solid | white);
}

TEST(Raster, NothingIsDrawnOutsideThePicture) {
  Raster raster(3, 3);
  fill(raster, -50, -50, -1, -1, 0, white);
  raster.line({-1e9, -1e3, 0}, {-10, 1e3, 0}, 3, white);
  fill(raster, {1, 1, 0}, {2, 2, 0}, {3, 3, 0}, white);  // no area
  for (const std::uint32_t found : raster.reduced()) EXPECT_EQ(found, 0U);
}

}  // namespace
}  // namespace p3dgrid::tool::plot
