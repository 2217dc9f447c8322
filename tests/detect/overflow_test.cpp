#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "p3dgrid/detect.hpp"
#include "p3dgrid/layout.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using test_support::Bytes;
using test_support::write_file;
using ::testing::HasSubstr;

class OverflowSolutions : public test_support::InScratchFolder {};

/// A single-precision solution of a block of 2x2x1 points, 6 variables and 3 species.
Bytes solution(int parameters, int variables = 6, int species = 3) {
  Bytes flow;
  for (int n = 0; n < variables * 4; ++n) flow.r4(static_cast<float>(n) / 4);
  Bytes leading;
  for (int n = 0; n < parameters; ++n) leading.r4(0.5F);
  return Bytes().record(Bytes().i4s({2, 2, 1, variables, species})).record(leading).record(flow);
}

TEST_F(OverflowSolutions, AreFound) {
  for (const int parameters : {5, 8, 17, 40}) {
    write_file("flow", solution(parameters));
    const Detection found = detect_any("flow");
    ASSERT_EQ(found.fitting.size(), 1U) << parameters;
    const Reading& reading = found.fitting.front();
    EXPECT_EQ(reading.restart().layout, Layout::overflow);
    EXPECT_FALSE(reading.restart().multiblock);
    EXPECT_EQ(reading.restart().sections, (Sections{{1, 6}}));
    EXPECT_EQ(*reading.extents, (Extents{{2}, {2}, {1}}));
  }
}

TEST_F(OverflowSolutions, HaveFiveVariablesAndFiveParametersAtLeast) {
  const auto is_one = [](const Bytes& bytes) {
    write_file("flow", bytes);
    return !detect_restart("flow", {.layout = Layout::overflow}).fitting.empty();
  };
  EXPECT_TRUE(is_one(solution(17)));
  EXPECT_FALSE(is_one(solution(4)));
  EXPECT_FALSE(is_one(solution(17, 4)));
  EXPECT_FALSE(is_one(solution(17, 6, -1)));
  EXPECT_FALSE(is_one(solution(17, 6, 7)));
}

TEST_F(OverflowSolutions, AreUnformatted) {
  write_file("flow", solution(17));
  const StatedRestartForm text{.layout = Layout::overflow,
                               .coding = {.encoding = Encoding::formatted}};
  EXPECT_TRUE(detect_restart("flow", text).fitting.empty());
  const LayoutTraits& layout = traits_of(Layout::overflow);
  EXPECT_FALSE(has_files_of(layout, {.encoding = Encoding::binary}));
  EXPECT_THAT(no_files_of(layout, {.encoding = Encoding::binary}), HasSubstr("binary"));
  EXPECT_FALSE(traits_of(static_cast<std::int32_t>(Layout::overflow)).known);
}

TEST(ParameterNames, DependOnTheNumberOfSpecies) {
  EXPECT_EQ(parameter_names(4, 0).back(), "time");
  EXPECT_EQ(parameter_names(16, 0).back(), "DTVREF");
  EXPECT_EQ(parameter_names(16, 3)[13], "RGAS3");
  EXPECT_EQ(parameter_names(18, 2).back(), "parameter 18");
}

}  // namespace
}  // namespace p3dgrid
