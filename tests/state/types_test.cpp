#include <gtest/gtest.h>

#include <type_traits>

#include "mod_gridvars.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid {
namespace {

using test_support::RunEnded;

class Types : public test_support::InScratchFolder {};
class FileNames : public test_support::InScratchFolder {};
class Arrays : public test_support::InScratchFolder {};

TEST_F(Types, LogicalIsTrueByItsLowestBitAndStoredWithAllBitsSet) {
  EXPECT_EQ(sizeof(logical), 4u);
  EXPECT_EQ(logical(true).bits(), -1);
  EXPECT_EQ(logical(false).bits(), 0);
  EXPECT_TRUE(logical::from_bits(1));
  EXPECT_TRUE(logical::from_bits(3));
  EXPECT_FALSE(logical::from_bits(2));
  EXPECT_EQ(logical::from_bits(1), logical(true));
}

TEST_F(Types, LogicalIsMadeFromBoolAlone) {
  static_assert(std::is_convertible_v<bool, logical>);
  static_assert(!std::is_convertible_v<int, logical>);
  static_assert(!std::is_convertible_v<const char*, logical>);
  static_assert(!std::is_convertible_v<logical, int>);
  static_assert(!std::is_convertible_v<logical, bool>);
}

TEST_F(FileNames, ArePaddedWithBlanks) {
  const FileName name("grid.p3d");
  EXPECT_EQ(name.view(), "grid.p3d");
  EXPECT_EQ(name.padded(), "grid.p3d" + std::string(32, ' '));
  EXPECT_EQ(FileName().view(), "");
  EXPECT_EQ(FileName(" a b  ").view(), " a b");
}

TEST_F(FileNames, OfFortyCharactersFitAndOneMoreIsAnErrorOfTheRun) {
  EXPECT_EQ(FileName(std::string(40, 'x')).view(), std::string(40, 'x'));
  EXPECT_EQ(FileName(std::string(40, 'x') + "  ").view(), std::string(40, 'x'));
  try {
    const FileName name(std::string(41, 'x'));
    FAIL() << name.view();
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(std::string(end.what()),
              "file name of 41 characters, at most 40 are possible: " + std::string(41, 'x'));
  }
}

TEST_F(FileNames, AreCutOnlyWhereAskedFor) {
  EXPECT_EQ(FileName::cut(std::string(39, 'x') + "yz").view(), std::string(39, 'x') + "y");
}

TEST_F(FileNames, WithANulCharacterAreAnErrorOfTheRun) {
  EXPECT_THROW(FileName(std::string_view("a\0b", 3)), RunEnded);
}

TEST_F(Arrays, AreAllocatedOnceAndReleasedOnce) {
  allocatable<float, 2> array;
  EXPECT_FALSE(array.allocated());
  EXPECT_EQ(array.deallocate(), not_allocated);
  EXPECT_EQ(array.allocate(3, 4), allocation_done);
  EXPECT_EQ(array.size(), 12);
  EXPECT_EQ(array.allocate(5, 6), already_allocated);
  EXPECT_EQ(array.extent(1), 3);
  EXPECT_EQ(array.extent(2), 4);
  EXPECT_EQ(array.deallocate(), allocation_done);
  EXPECT_FALSE(array.allocated());
  EXPECT_EQ(array.size(), 0);
}

TEST_F(Arrays, AreAddressedFromOneInFortranOrder) {
  allocatable<integer, 2> array;
  ASSERT_EQ(array.allocate(2, 3), allocation_done);
  for (integer n = 0; n < 6; ++n) array.data()[n] = n;
  EXPECT_EQ(array(1, 1), 0);
  EXPECT_EQ(array(2, 1), 1);
  EXPECT_EQ(array(1, 2), 2);
  EXPECT_EQ(array(2, 3), 5);
  EXPECT_EQ(array.span().data(), array.data());
  const array_view<const integer, 2> view = array;
  EXPECT_EQ(view(2, 2), 3);
}

TEST_F(Arrays, WithoutElementsAreAllocatedToo) {
  allocatable<float, 2> array;
  EXPECT_EQ(array.allocate(3, 0), allocation_done);
  EXPECT_TRUE(array.allocated());
  EXPECT_EQ(array.size(), 0);
  allocatable<integer, 1> below;
  EXPECT_EQ(below.allocate(-7), allocation_done);
  EXPECT_EQ(below.extent(1), 0);
}

TEST_F(Arrays, TooLargeForMemoryAreNotAllocatedButKeepTheirBounds) {
  allocatable<double, 2> array;
  EXPECT_EQ(array.allocate(std::int64_t{1} << 60, 1), out_of_memory);
  EXPECT_FALSE(array.allocated());
  EXPECT_EQ(array.extent(1), std::int64_t{1} << 60);
  EXPECT_EQ(array.size(), 0);
  EXPECT_EQ(array.allocate(std::int64_t{1} << 40, std::int64_t{1} << 40), out_of_memory);
  const array_view<const double, 2> view = array;
  EXPECT_EQ(view.extent(1), 0);
}

TEST_F(Arrays, HandTheirStorageOverWhenMoved) {
  allocatable<integer, 1> from;
  ASSERT_EQ(from.allocate(4), allocation_done);
  const integer* const storage = from.data();
  allocatable<integer, 1> to = std::move(from);
  EXPECT_EQ(to.data(), storage);
  EXPECT_EQ(to.extent(1), 4);
  EXPECT_FALSE(from.allocated());
  static_assert(!std::is_copy_constructible_v<allocatable<integer, 1>>);
}

TEST_F(Arrays, StatusesOfAnArrayThatExistsAndOfMemoryThatRanOutDiffer) {
  static_assert(allocation_done == 0);
  static_assert(already_allocated != 0 && out_of_memory != 0);
  static_assert(already_allocated != out_of_memory);
}

TEST_F(Arrays, ViewsAreMadeFromVectorsAndPointers) {
  std::vector<integer> values{4, 5, 6};
  const array_view<const integer, 1> one = values;
  EXPECT_EQ(one(3), 6);
  EXPECT_EQ(one.extent(1), 3);
  const array_view<integer, 2> two(values.data(), 1, 3);
  EXPECT_EQ(two(1, 2), 5);
}

}  // namespace
}  // namespace mod_p3dgrid
