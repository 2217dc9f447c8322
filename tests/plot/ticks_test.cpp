#include <gmock/gmock.h>

#include "plot/scale.hpp"

namespace p3dgrid::tool::plot {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> labels(const Ticks& ticks) {
  std::vector<std::string> texts;
  for (const double value : ticks.values) texts.push_back(ticks.label(value));
  return texts;
}

TEST(Ticks, StepIsOneTwoOrFive) {
  EXPECT_DOUBLE_EQ(round_step(1), 1);
  EXPECT_DOUBLE_EQ(round_step(1.1), 2);
  EXPECT_DOUBLE_EQ(round_step(2.1), 5);
  EXPECT_DOUBLE_EQ(round_step(5.1), 10);
  EXPECT_DOUBLE_EQ(round_step(0.003), 0.005);
  EXPECT_DOUBLE_EQ(round_step(1e-300), 1e-300);
}

TEST(Ticks, LieWithinTheClosedRange) {
  EXPECT_THAT(labels(ticks_between(0, 10, 5)), ElementsAre("0", "2", "4", "6", "8", "10"));
  EXPECT_THAT(labels(ticks_between(0.1, 9.9, 5)), ElementsAre("2", "4", "6", "8"));
  EXPECT_THAT(labels(ticks_between(-1, 1, 4)),
              ElementsAre("\u22121.0", "\u22120.5", "0", "0.5", "1.0"));
}

TEST(Ticks, LabelsOfNeighboursDiffer) {
  EXPECT_THAT(labels(ticks_between(1.00001, 1.00003, 2)),
              ElementsAre("1.00001", "1.00002", "1.00003"));
  EXPECT_THAT(labels(ticks_between(0, 3e7, 3)), ElementsAre("0", "1e7", "2e7", "3e7"));
  EXPECT_THAT(labels(ticks_between(1.2e-9, 1.4e-9, 2)),
              ElementsAre("1.2e\u22129", "1.3e\u22129", "1.4e\u22129"));
  EXPECT_THAT(labels(ticks_between(999000, 1002000, 3)),
              ElementsAre("9.99e5", "1.000e6", "1.001e6", "1.002e6"));
}

TEST(Ticks, RangesThatDoublesCannotResolveHaveNone) {
  EXPECT_THAT(ticks_between(1e30, 1e30, 5).values, IsEmpty());
  EXPECT_THAT(ticks_between(1e17, 1e17 + 32, 5).values, IsEmpty());
}

}  // namespace
}  // namespace p3dgrid::tool::plot
