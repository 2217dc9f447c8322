#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "p3dgrid/detect.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using test_support::Bytes;
using test_support::write_file;
using ::testing::IsEmpty;

class PlausibleReals : public test_support::InScratchFolder {};

constexpr ByteOrder other_order =
    ByteOrder::native == ByteOrder::little ? ByteOrder::big : ByteOrder::little;

/// The bytes with those of each word in the other order.
std::string swapped(const Bytes& bytes, std::size_t word) {
  std::string all = bytes.str();
  for (std::size_t n = 0; n < all.size(); n += word) {
    std::reverse(all.begin() + static_cast<std::ptrdiff_t>(n),
                 all.begin() + static_cast<std::ptrdiff_t>(n + word));
  }
  return all;
}

std::shared_ptr<const Extents> points(std::int32_t count) {
  return std::make_shared<const Extents>(Extents{{count}, {1}, {1}});
}

Detection detect_bare(std::int32_t count, const StatedCoding& coding = {}) {
  return detect_restart("flow", {.layout = Layout::bare, .coding = coding}, points(count));
}

TEST_F(PlausibleReals, ShowTheByteOrderOfOnePoint) {
  const Bytes flow = Bytes().r4s({1, 0.5F, 0, -0.25F, 2.5F});
  for (const ByteOrder order : {ByteOrder::native, other_order}) {
    write_file("flow", order == ByteOrder::native ? flow.str() : swapped(flow, 4));
    const Detection found = detect_bare(1);
    ASSERT_EQ(found.fitting.size(), 1U);
    EXPECT_EQ(found.fitting.front().coding().byte_order, order);
    EXPECT_EQ(found.fitting.front().preferred, "its reals are plausible in this byte order only");
  }
}

TEST_F(PlausibleReals, ShowThePrecision) {
  Bytes flow;
  for (int n = 0; n < 100; ++n) flow.r8(std::sqrt(n + 2.0));
  for (const ByteOrder order : {ByteOrder::native, other_order}) {
    write_file("flow", order == ByteOrder::native ? flow.str() : swapped(flow, 8));
    const Detection found = detect_bare(20);
    ASSERT_EQ(found.fitting.size(), 1U);
    EXPECT_EQ(found.fitting.front().coding().precision, Precision::double_precision);
    EXPECT_EQ(found.fitting.front().coding().byte_order, order);
    EXPECT_EQ(found.fitting.front().preferred,
              "its reals are plausible in this byte order and precision only");
  }
  write_file("flow", Bytes().record(flow));
  EXPECT_EQ(detect_bare(20).fitting.front().preferred,
            "its reals are plausible in this precision only");
}

TEST_F(PlausibleReals, AreSoughtInAllPartsOfARecord) {
  constexpr int count = 400;
  for (const int place : {0, count * 5 / 2, count * 5 - 1}) {
    Bytes flow;
    for (int n = 0; n < count * 5; ++n) {
      flow.r4(n == place ? std::numeric_limits<float>::quiet_NaN() : 0.0F);
    }
    write_file("flow", flow);
    EXPECT_GT(detect_bare(count).fitting.size(), 1U) << place;
  }
}

TEST_F(PlausibleReals, LeaveStatedOptionsAsTheyAre) {
  write_file("flow", Bytes().r4s({1, 0.5F, 0, -0.25F, 2.5F}));
  const Detection found = detect_bare(1, {.byte_order = other_order});
  ASSERT_EQ(found.fitting.size(), 1U);
  EXPECT_EQ(found.fitting.front().coding().byte_order, other_order);
  EXPECT_THAT(found.fitting.front().preferred, IsEmpty());
}

TEST_F(PlausibleReals, DecideNothingWhereAllReadingsHaveThem) {
  write_file("flow", std::string(20, '\0'));
  EXPECT_EQ(detect_bare(1).fitting.size(), 2U);
}

}  // namespace
}  // namespace p3dgrid
