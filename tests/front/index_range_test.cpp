#include "p3dgrid/index_range.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "front/front_case.hpp"
#include "p3dgrid/grid.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A block whose points have their numbers as x, and other values made from them.
template <class Real>
Block numbered(const BlockExtents& extents) {
  const auto points = static_cast<std::size_t>(extents.points());
  Array<Real> x(points);
  std::iota(x.begin(), x.end(), Real{0});
  Block block{.extents = extents, .x = Reals(x), .y = Reals(x), .z = Reals(x)};
  block.y.visit([](auto values) {
    for (auto& value : values) value += 0.5F;
  });
  block.z.visit([](auto values) {
    for (auto& value : values) value = -value;
  });
  for (std::size_t p = 0; p < points; ++p) {
    block.iblank.push_back(static_cast<std::int32_t>(p) - 3);
  }
  return block;
}

bool same(const Block& one, const Block& other) {
  return one.extents == other.extents && one.x == other.x && one.y == other.y && one.z == other.z &&
         one.iblank == other.iblank;
}

class Random {
 public:
  std::int32_t upto(std::int32_t most) {
    return std::uniform_int_distribution<std::int32_t>(0, most)(engine_);
  }
  BlockExtents extents() { return {1 + upto(7), 1 + upto(7), 1 + upto(7)}; }
  Indices indices(std::int32_t extent) {
    const std::int32_t first = upto(extent - 1);
    return {first, upto(3) == 0 ? Indices::all_points : first + upto(extent - first - 1),
            1 + upto(3)};
  }
  IndexRange range(const BlockExtents& block) {
    IndexRange range;
    for (const Direction d : all_directions) range.set(d, indices(along(block, d)));
    return range;
  }
  Orientation orientation() {
    Orientation result;
    std::shuffle(result.axes.begin(), result.axes.end(), engine_);
    for (bool& reversed : result.reversed) reversed = upto(1) == 1;
    return result;
  }

 private:
  std::mt19937 engine_{42};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same cases in every run
};

constexpr int repetitions = 300;

TEST(NumberList, IsParsedFromText) {
  EXPECT_EQ(numbers_in("3"), (Sections{{3, 3}}));
  EXPECT_EQ(numbers_in("1,3-5"), (Sections{{1, 1}, {3, 5}}));
  EXPECT_EQ(numbers_in("5-5,1000000"), (Sections{{5, 5}, {1000000, 1000000}}));
  for (const char* text : {"", ",", "1,", ",1", "1,,2", "0", "1-", "-1", "5-4", "1-2-3", "1 ", "x",
                           "1000001", "99999999999999999999"}) {
    EXPECT_EQ(numbers_in(text), std::nullopt) << text;
  }
}

TEST(IndexRange, TextIsParsed) {
  constexpr std::int32_t last = Indices::all_points;
  EXPECT_EQ(indices_in("3"), (Indices{2, 2, 1}));
  EXPECT_EQ(indices_in("last"), (Indices{last, last, 1}));
  EXPECT_EQ(indices_in("1:33"), (Indices{0, 32, 1}));
  EXPECT_EQ(indices_in("2:last"), (Indices{1, last, 1}));
  EXPECT_EQ(indices_in("1:last:2"), (Indices{0, last, 2}));
  EXPECT_EQ(indices_in("2147483647:last:2147483647"), (Indices{0x7ffffffe, last, 0x7fffffff}));
  for (const char* text :
       {"", ":", "0", "-1", "1:", "1:2:", "1:2:0", "1:2:last", "5:4", "last:5", "1:2:3:4",
        "1:2:3:", " 1", "1 ", "1.5", "+1", "a", "2147483648", "1::2"}) {
    EXPECT_EQ(indices_in(text), std::nullopt) << text;
  }
}

TEST(IndexRange, DirectionsAreParsed) {
  EXPECT_EQ(direction_in("i"), Direction::i);
  EXPECT_EQ(direction_in("k"), Direction::k);
  for (const char* text : {"", "x", "ij", "I"}) EXPECT_EQ(direction_in(text), std::nullopt) << text;
}

TEST(IndexRange, EndsAtTheHighestIndexThatIsReached) {
  EXPECT_EQ((Indices{0, Indices::all_points, 2}).in(6), (Indices{0, 4, 2}));
  EXPECT_EQ((Indices{1, 100, 4}).in(6), (Indices{1, 5, 4}));
  EXPECT_EQ((Indices{Indices::all_points, Indices::all_points, 1}).in(6), (Indices{5, 5, 1}));
  EXPECT_EQ((Indices{6, 8, 1}).in(6).count(), 0);
  EXPECT_EQ((Indices{0, Indices::all_points, 1}).in(0).count(), 0);
  EXPECT_EQ((Indices{Indices::all_points, Indices::all_points, 1}).in(0).count(), 0);
  EXPECT_EQ((Indices{-2, 3, 0}).in(6), (Indices{0, 3, 1}));
}

TEST(IndexRange, PointsAreExtracted) {
  const Block block = numbered<float>({5, 3, 2});
  IndexRange range;
  range.set(Direction::i, {0, Indices::all_points, 2});
  range.set(Direction::j, {1, 2, 1});
  range.set(Direction::k, {1, 1, 1});
  const Block part = extract(block, range);
  EXPECT_EQ(part.extents, (BlockExtents{3, 2, 1}));
  EXPECT_THAT(list_of(part.x), ElementsAre(20, 22, 24, 25, 27, 29));
  EXPECT_THAT(part.iblank, ElementsAre(17, 19, 21, 22, 24, 26));
  EXPECT_THAT(list_of(extract(block.y, block.extents, range)),
              ElementsAre(20.5, 22.5, 24.5, 25.5, 27.5, 29.5));
  EXPECT_THAT(list_of(extract(block, {.first = {7, 0, 0}}).x), IsEmpty());
}

/// Each point is looked up by its three indices.
TEST(IndexRange, EveryPointComesFromItsPlace) {
  Random random;
  for (int n = 0; n < repetitions; ++n) {
    const BlockExtents extents = random.extents();
    const IndexRange range = random.range(extents);
    const Block part = extract(numbered<double>(extents), range);
    const BlockExtents& e = part.extents;
    std::int64_t at = 0;
    for (std::int32_t k = 0; k < e.k; ++k) {
      for (std::int32_t j = 0; j < e.j; ++j) {
        for (std::int32_t i = 0; i < e.i; ++i) {
          const std::int64_t from =
              range.first.i + i * range.stride.i +
              extents.i * (range.first.j + j * range.stride.j +
                           std::int64_t{extents.j} * (range.first.k + k * range.stride.k));
          ASSERT_EQ(part.x[at++], static_cast<double>(from));
        }
      }
    }
    ASSERT_EQ(at, part.x.size());
  }
}

class IndexRangeOfFile : public InScratchFolder {};

/// A file is read by another path than an array in memory.
TEST_F(IndexRangeOfFile, GivesThePointsThatMemoryGives) {
  Random random;
  for (int n = 0; n < repetitions; ++n) {
    const BlockExtents extents = random.extents();
    const Block block = numbered<double>(extents);
    const auto encoding = static_cast<Encoding>(n % 3);
    const StatedGridForm form{.coding = {.encoding = encoding,
                                         .precision = Precision::double_precision,
                                         .byte_order = ByteOrder::big,
                                         .marker_bytes = MarkerBytes::four,
                                         .dimensions = Dimensions::three},
                              .multiblock = true,
                              .iblank = true};
    write_grid("grid", {.blocks = {block}}, form);
    const IndexRange range = random.range(extents);
    GridReader reader("grid", form);
    ASSERT_TRUE(same(reader.read(0, range), extract(block, range))) << n;
  }
}

TEST(Orientation, ReversesAndSwaps) {
  const Block block = numbered<float>({3, 2, 1});
  EXPECT_THAT(list_of(reorient(block, Orientation::reverse(Direction::i)).x),
              ElementsAre(2, 1, 0, 5, 4, 3));
  const Block swapped = reorient(block, Orientation::swap(Direction::i, Direction::j));
  EXPECT_EQ(swapped.extents, (BlockExtents{2, 3, 1}));
  EXPECT_THAT(list_of(swapped.x), ElementsAre(0, 3, 1, 4, 2, 5));
  EXPECT_THAT(swapped.iblank, ElementsAre(-3, 0, -2, 1, -1, 2));
  EXPECT_EQ(reorient(block, Orientation::swap(Direction::i, Direction::k)).extents,
            (BlockExtents{1, 2, 3}));
}

TEST(Orientation, TwiceIsTheIdentity) {
  Random random;
  for (int n = 0; n < repetitions; ++n) {
    const Block block = numbered<double>(random.extents());
    const Direction one = all_directions[static_cast<std::size_t>(random.upto(2))];
    const Direction other = all_directions[static_cast<std::size_t>(random.upto(2))];
    const Orientation change =
        n % 2 == 0 ? Orientation::reverse(one) : Orientation::swap(one, other);
    EXPECT_EQ(change.then(change), Orientation{});
    ASSERT_TRUE(same(reorient(reorient(block, change), change), block));
  }
}

TEST(Orientation, OneAfterTheOtherIsTheirCombination) {
  Random random;
  for (int n = 0; n < repetitions; ++n) {
    const Block block = numbered<double>(random.extents());
    const Orientation one = random.orientation();
    const Orientation other = random.orientation();
    ASSERT_TRUE(same(reorient(reorient(block, one), other), reorient(block, one.then(other))));
    EXPECT_EQ(one.then(other).keeps_handedness(),
              one.keeps_handedness() == other.keeps_handedness());
  }
}

/// Extents beyond the tiles of the copy.
TEST(Orientation, LargeBlocksAreCopiedWhole) {
  const Block block = numbered<double>({150, 70, 65});
  const Orientation change =
      Orientation::swap(Direction::i, Direction::k).then(Orientation::reverse(Direction::j));
  const Block result = reorient(block, change);
  EXPECT_EQ(result.extents, (BlockExtents{65, 70, 150}));
  EXPECT_EQ(result.x[64 + 65 * (69 + 70 * 149)], 149 + 150 * (0 + 70 * 64));
  EXPECT_TRUE(same(reorient(result, change), block));
}

TEST(Orientation, Handedness) {
  EXPECT_TRUE(Orientation{}.keeps_handedness());
  for (const Direction d : all_directions) {
    EXPECT_FALSE(Orientation::reverse(d).keeps_handedness());
  }
  EXPECT_FALSE(Orientation::swap(Direction::i, Direction::j).keeps_handedness());
  EXPECT_FALSE(Orientation::swap(Direction::k, Direction::i).keeps_handedness());
  EXPECT_TRUE((Orientation{.axes = {Direction::j, Direction::k, Direction::i}}).keeps_handedness());
}

}  // namespace
}  // namespace p3dgrid
