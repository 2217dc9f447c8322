#include "state/point_numbering.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace mod_p3dgrid {
namespace {

constexpr integer most = std::numeric_limits<integer>::max();

PointNumbering numbering_for(integer blocks) {
  PointNumbering points;
  for (auto* array : {&points.npts, &points.istart, &points.iend}) {
    EXPECT_EQ(array->allocate(blocks), allocation_done);
  }
  return points;
}

TEST(PointNumbering, BlocksFollowEachOther) {
  PointNumbering points = numbering_for(2);
  ASSERT_TRUE(points.number_block(1, 2, 2, 2));
  ASSERT_TRUE(points.number_block(2, 3, 1, 1));
  EXPECT_EQ(points.npts(1), 8);
  EXPECT_EQ(points.npts(2), 3);
  EXPECT_EQ(points.istart(1), 1);
  EXPECT_EQ(points.iend(1), 8);
  EXPECT_EQ(points.istart(2), 9);
  EXPECT_EQ(points.iend(2), 11);
  EXPECT_EQ(points.total, 11);
  EXPECT_EQ(points.before(1), 0);
  EXPECT_EQ(points.before(2), 8);
}

TEST(PointNumbering, ABlockWithoutPointsEndsBeforeItStarts) {
  PointNumbering points = numbering_for(3);
  ASSERT_TRUE(points.number_block(1, 4, 1, 1));
  ASSERT_TRUE(points.number_block(2, 7, 0, 7));
  ASSERT_TRUE(points.number_block(3, 1, 1, 2));
  EXPECT_EQ(points.istart(2), 5);
  EXPECT_EQ(points.iend(2), 4);
  EXPECT_EQ(points.before(2), 4);
  EXPECT_EQ(points.istart(3), 5);
  EXPECT_EQ(points.iend(3), 6);
}

TEST(PointNumbering, RefusesWhatThirtyTwoBitsCannotCountAndChangesNothing) {
  PointNumbering points = numbering_for(2);
  EXPECT_FALSE(points.number_block(1, most, 2, 1));
  EXPECT_FALSE(points.number_block(1, most, most, most));
  EXPECT_FALSE(points.number_block(1, 65536, 65536, 1));
  EXPECT_FALSE(points.number_block(1, -1, 0, 1));
  EXPECT_FALSE(points.number_block(1, -1, -1, 1));
  EXPECT_EQ(points.total, 0);
  ASSERT_TRUE(points.number_block(1, most, 1, 1));
  EXPECT_FALSE(points.number_block(2, 1, 1, 1));
  ASSERT_TRUE(points.number_block(2, 0, 1, 1));
  EXPECT_EQ(points.before(2), most);
}

}  // namespace
}  // namespace mod_p3dgrid
