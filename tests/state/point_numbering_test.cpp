#include "state/point_numbering.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace mod_p3dgrid {
namespace {

constexpr integer most = std::numeric_limits<integer>::max();

PointNumbering numbering_for(integer blocks) {
  PointNumbering points;
  EXPECT_EQ(points.npts.allocate(blocks), allocation_done);
  EXPECT_EQ(points.iend.allocate(blocks), allocation_done);
  return points;
}

TEST(PointNumbering, BlocksFollowEachOther) {
  PointNumbering points = numbering_for(2);
  ASSERT_TRUE(points.number_block(1, {2, 2, 2}));
  ASSERT_TRUE(points.number_block(2, {3, 1, 1}));
  EXPECT_EQ(points.npts(1), 8);
  EXPECT_EQ(points.npts(2), 3);
  EXPECT_EQ(points.iend(1), 8);
  EXPECT_EQ(points.iend(2), 11);
  EXPECT_EQ(points.total, 11);
  EXPECT_EQ(points.before(1), 0);
  EXPECT_EQ(points.before(2), 8);
}

TEST(PointNumbering, ABlockWithoutPointsEndsBeforeItStarts) {
  PointNumbering points = numbering_for(3);
  ASSERT_TRUE(points.number_block(1, {4, 1, 1}));
  ASSERT_TRUE(points.number_block(2, {7, 0, 7}));
  ASSERT_TRUE(points.number_block(3, {1, 1, 2}));
  EXPECT_EQ(points.iend(2), 4);
  EXPECT_EQ(points.before(2), 4);
  EXPECT_EQ(points.iend(3), 6);
}

TEST(PointNumbering, CountsMorePointsInAllThanInABlock) {
  PointNumbering points = numbering_for(4);
  for (integer b = 1; b <= 3; ++b) ASSERT_TRUE(points.number_block(b, {1000, 1000, 1000})) << b;
  ASSERT_TRUE(points.number_block(4, {most, 1, 1}));
  EXPECT_EQ(points.npts(3), 1'000'000'000);
  EXPECT_EQ(points.iend(3), 3'000'000'000);
  EXPECT_EQ(points.before(3), 2'000'000'000);
  EXPECT_EQ(points.iend(4), 5'147'483'647);
  EXPECT_EQ(points.before(4), 3'000'000'000);
  EXPECT_EQ(points.total, 5'147'483'647);
}

TEST(PointNumbering, RefusesABlockThatThirtyTwoBitsCannotCountAndChangesNothing) {
  PointNumbering points = numbering_for(2);
  ASSERT_TRUE(points.number_block(1, {most, 1, 1}));
  EXPECT_FALSE(points.number_block(2, {most, 2, 1}));
  EXPECT_FALSE(points.number_block(2, {most, most, most}));
  EXPECT_FALSE(points.number_block(2, {65536, 65536, 1}));
  EXPECT_FALSE(points.number_block(2, {65536, 32768, 1}));
  EXPECT_FALSE(points.number_block(2, {-1, 0, 1}));
  EXPECT_FALSE(points.number_block(2, {-1, -1, 1}));
  EXPECT_EQ(points.total, most);
  ASSERT_TRUE(points.number_block(2, {0, most, most}));
  EXPECT_EQ(points.before(2), most);
}

TEST(PointNumbering, IsThatOfTheCallersExtents) {
  const std::vector<integer> thousands(3, 1000);
  const PointNumbering points = checked_numbering("file", 3, {thousands, thousands, thousands});
  EXPECT_EQ(points.total, 3'000'000'000);
  EXPECT_EQ(points.before(3), 2'000'000'000);
}

TEST(PointNumbering, CountsNoMoreValuesThanSixtyFourBitsCan) {
  EXPECT_EQ(values_of(3'000'000'000, 3), 9'000'000'000);
  EXPECT_EQ(values_of(0, std::numeric_limits<std::int64_t>::max()), 0);
  EXPECT_EQ(values_of(std::int64_t{1} << 62, 3), std::numeric_limits<std::int64_t>::max());
}

}  // namespace
}  // namespace mod_p3dgrid
