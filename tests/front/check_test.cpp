/// Checks that return all findings.

#include "p3dgrid/check.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "front/front_case.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FrontCheck : public InScratchFolder {};

/// Three blocks of one or two points in double precision.
Bytes three_blocks(std::int32_t first, std::int32_t second, std::int32_t third) {
  Bytes bytes;
  bytes.record(Bytes().i4(3)).record(Bytes().i4s({first, 1, 1, second, 1, 1, third, 1, 1}));
  for (const std::int32_t points : {first, second, third}) {
    Bytes coordinates;
    for (std::int32_t n = 0; n < 3 * points; ++n) coordinates.r8(0.1 * n);
    bytes.record(coordinates);
  }
  return bytes;
}

/// A solution of three blocks of a point.
Bytes three_flows() {
  Bytes bytes;
  bytes.record(Bytes().i4(3)).record(Bytes().i4s({1, 1, 1, 1, 1, 1, 1, 1, 1}));
  for (int block = 0; block < 3; ++block) {
    bytes.record(Bytes().r8s({0.1, 0.2, 0.3, 0.4})).record(Bytes().r8s({1, 2, 3, 4, 5}));
  }
  return bytes;
}

std::vector<std::string> texts_of(const std::vector<Error>& findings) {
  std::vector<std::string> texts;
  for (const Error& finding : findings) texts.emplace_back(finding.what());
  return texts;
}

TEST_F(FrontCheck, FindsNothingInWholeFiles) {
  write_file("grid", three_blocks(1, 1, 1));
  write_file("flow", three_flows());
  EXPECT_THAT(check("grid"), IsEmpty());
  EXPECT_THAT(check("flow"), IsEmpty());
  EXPECT_THAT(check_grid("grid"), IsEmpty());
  EXPECT_THAT(check_pair("grid", "flow"), IsEmpty());
}

TEST_F(FrontCheck, FindsEachBlockThatDiffers) {
  write_file("grid", three_blocks(2, 1, 2));
  write_file("flow", three_flows());
  const auto findings = check_pair("grid", "flow");
  EXPECT_THAT(texts_of(findings),
              ElementsAre("flow: does not belong to its grid: its block 1 is 1x1x1, the grid's "
                          "2x1x1",
                          "flow: does not belong to its grid: its block 3 is 1x1x1, the grid's "
                          "2x1x1"));
  EXPECT_EQ(findings.front().kind(), ErrorKind::mismatch);
  EXPECT_EQ(findings.front().details().found, "1x1x1");
  EXPECT_EQ(findings.front().details().expected, "2x1x1");
}

TEST_F(FrontCheck, ReportsPairsAsTheModuleDoes) {
  Extents grid;
  grid.add({2, 2, 2});
  grid.add({12, 345, 1});
  Extents flow = grid;
  flow.k[1] = 1234567;
  const std::vector<std::string> of_blocks = {
      "",
      " Indecies for block 2 in grid and restart file do not match.",
      "               i     j     k  ",
      " Grid   :     12   345     1",
      " Restart:     12   345******",
      "",
      "   --- CODE HALTED ---"};
  EXPECT_EQ(mismatch_report(grid, flow), of_blocks);
  flow.add({1, 1, 1});
  const std::vector<std::string> of_counts = {
      "",
      " Number of blocks in Grid do not match the Restart file",
      " Number of Grid blocks   : 2",
      " Number of Restart blocks: 3",
      "",
      "   --- CODE HALTED ---"};
  EXPECT_EQ(mismatch_report(grid, flow), of_counts);
}

TEST_F(FrontCheck, CountsTheBlocksOfTwoFiles) {
  Extents one;
  one.add({2, 2, 2});
  Extents three = one;
  three.add({2, 2, 2});
  three.add({2, 2, 2});
  const auto less = differing_blocks("flow", one, three);
  EXPECT_THAT(texts_of(less),
              ElementsAre("flow: does not belong to its grid: it holds 1 block, the "
                          "grid 3"));
  EXPECT_EQ(less.front().details().found, "1 block");
  EXPECT_EQ(less.front().details().expected, "3 blocks");
  const auto more = differing_blocks("flow", three, one, "grid");
  EXPECT_THAT(texts_of(more), ElementsAre("flow: does not belong to grid: it holds 3 blocks, the "
                                          "grid 1"));
  EXPECT_EQ(more.front().details().expected, "1 block");
}

TEST_F(FrontCheck, ComparesASolutionWithExtents) {
  write_file("flow", three_flows());
  const StatedRestartForm stated = {.layout = Layout::solution};
  const auto same = std::make_shared<const Extents>(Extents{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
  EXPECT_THAT(check_solution("flow", stated, same), IsEmpty());
  EXPECT_THAT(check_solution("flow"), IsEmpty());
  const auto other = std::make_shared<const Extents>(Extents{{1, 2, 1}, {1, 1, 1}, {1, 1, 1}});
  EXPECT_THAT(texts_of(check_solution("flow", stated, other)),
              ElementsAre(HasSubstr("its block 2 is 1x1x1, the grid's 2x1x1")));
}

TEST_F(FrontCheck, FindsTheDamageOfBothFiles) {
  write_file("grid", three_blocks(1, 1, 1).str() + "more");
  write_file("flow", three_flows().str().substr(0, 150));
  const auto findings = check_pair("grid", "flow");
  EXPECT_THAT(texts_of(findings), ElementsAre(HasSubstr("grid: "), HasSubstr("flow: ")));
  EXPECT_EQ(findings.back().kind(), ErrorKind::damaged);
  EXPECT_EQ(findings.back().details().record, 5);
  EXPECT_EQ(findings.back().details().offset, 144);
}

TEST_F(FrontCheck, FindsAFormThatIsNotTheOneStated) {
  write_file("grid", three_blocks(1, 1, 1));
  const auto findings = check_grid(
      "grid",
      stated_as(GridForm{.coding = {.encoding = Encoding::unformatted}, .multiblock = true}));
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings.front().kind(), ErrorKind::mismatch);
}

TEST_F(FrontCheck, ThrowsWhatIsNoFinding) {
  EXPECT_EQ(error_of([] { static_cast<void>(check("missing")); }).kind(), ErrorKind::system);
}

}  // namespace
}  // namespace p3dgrid
