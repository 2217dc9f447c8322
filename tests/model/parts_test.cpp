/// Parts of random grids, and grids with their points in another order.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "model/front_generators.hpp"
#include "p3dgrid/index_range.hpp"

namespace model {
namespace {

using p3dgrid::all_directions;
using p3dgrid::Block;
using p3dgrid::Direction;
using p3dgrid::IndexRange;
using p3dgrid::Indices;
using p3dgrid::Orientation;

class FrontParts : public test_support::InScratchFolder {};

/// Equal to the bit, whatever the bits mean.
bool are_same(const Block& one, const Block& other) {
  const auto same = [](const p3dgrid::Reals& a, const p3dgrid::Reals& b) {
    return a.precision() == b.precision() && bits_as<double>(a) == bits_as<double>(b);
  };
  return one.extents == other.extents && same(one.x, other.x) && same(one.y, other.y) &&
         same(one.z, other.z) && one.iblank == other.iblank;
}

/// Some begin or end beyond the last point.
Indices any_indices(std::int32_t extent) {
  const auto first = *rc::gen::inRange(0, extent + 2);
  const auto last = *rc::gen::element(first, first + 1, extent, Indices::all_points);
  return {first, last, *rc::gen::inRange(1, 4)};
}

IndexRange any_range(const p3dgrid::BlockExtents& extents) {
  IndexRange range;
  for (const Direction d : all_directions) range.set(d, any_indices(along(extents, d)));
  return range;
}

/// Swaps and reversals, up to four.
Orientation any_orientation() {
  Orientation orientation;
  const auto steps = *rc::gen::container<std::vector<std::pair<int, int>>>(
      4, rc::gen::pair(rc::gen::inRange(0, 3), rc::gen::inRange(0, 3)));
  for (const auto& [one, other] : steps) {
    const auto d = static_cast<Direction>(one);
    const auto e = static_cast<Direction>(other);
    orientation = orientation.then(d == e ? Orientation::reverse(d) : Orientation::swap(d, e));
  }
  return orientation;
}

void check_ranges() {
  const InEmptyFolder folder;
  const p3dgrid::GridForm form = any_grid_form();
  p3dgrid::write_grid("grid", any_grid(form), stated_as(form));
  p3dgrid::GridReader reader("grid", stated_as(form));
  for (std::int32_t b = 0; b < reader.extents().blocks(); ++b) {
    const Block whole = reader.read(b);
    const IndexRange range = any_range(whole.extents);
    const Block part = reader.read(b, range);
    RC_ASSERT(part.extents == range.extents_in(whole.extents));
    RC_ASSERT(are_same(part, extract(whole, range)));
  }
}

void check_involutions() {
  for (const Block& block : any_grid(any_grid_form()).blocks) {
    for (const Direction d : all_directions) {
      const auto reversal = Orientation::reverse(d);
      RC_ASSERT(are_same(reorient(reorient(block, reversal), reversal), block));
      for (const Direction e : all_directions) {
        const auto swap = Orientation::swap(d, e);
        RC_ASSERT(are_same(reorient(reorient(block, swap), swap), block));
      }
    }
  }
}

void check_compositions() {
  const Orientation one = any_orientation();
  const Orientation other = any_orientation();
  for (const Block& block : any_grid(any_grid_form()).blocks) {
    const Block turned = reorient(reorient(block, one), other);
    RC_ASSERT(turned.extents == one.then(other).extents_of(block.extents));
    RC_ASSERT(are_same(turned, reorient(block, one.then(other))));
  }
}

TEST_F(FrontParts, AreReadAsTheyAreTakenInMemory) {
  EXPECT_TRUE(rc::check("a range is read with steps", check_ranges));
}

TEST_F(FrontParts, SwapsAndReversalsUndoThemselves) {
  EXPECT_TRUE(rc::check("a change is made twice", check_involutions));
}

TEST_F(FrontParts, TwoChangesOfTheOrderAreOne) {
  EXPECT_TRUE(rc::check("two changes are made", check_compositions));
}

}  // namespace
}  // namespace model
