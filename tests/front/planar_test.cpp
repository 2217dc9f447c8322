#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/front_case.hpp"
#include "p3dgrid/solution.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Files of two dimensions: a block of 3 x 2 points.
class FrontPlanes : public InScratchFolder {
 protected:
  static Bytes header() { return Bytes().record(Bytes().i4(1)).record(Bytes().i4s({3, 2})); }
  static Bytes grid_file() {
    return header().record(Bytes().r8s({1, 2, 3, 1, 2, 3, 0, 0, 0, 0.1, 0.1, 0.1}));
  }
  static Bytes flow_file() {
    Bytes flow;
    for (int v = 1; v <= 4; ++v) {
      for (int p = 0; p < 6; ++p) flow.r8(v + p / 10.0);
    }
    return header().record(Bytes().r8s({0.5, 2, 1000, 0})).record(flow);
  }
  static constexpr StatedCoding in_two{.dimensions = Dimensions::two};
  static constexpr StatedCoding in_three{.dimensions = Dimensions::three};
};

TEST_F(FrontPlanes, AreGridsWithOnePlane) {
  write_file("grid", grid_file());
  const Grid grid = read_grid("grid");
  EXPECT_EQ(grid.form.coding.dimensions, Dimensions::two);
  ASSERT_EQ(grid.blocks.size(), 1U);
  EXPECT_EQ(grid.blocks[0].extents, (BlockExtents{3, 2, 1}));
  EXPECT_THAT(list_of(grid.blocks[0].y), ElementsAre(0, 0, 0, 0.1, 0.1, 0.1));
  EXPECT_THAT(list_of(grid.blocks[0].z), ElementsAre(0, 0, 0, 0, 0, 0));
  write_grid("copy", grid);
  EXPECT_EQ(read_file("copy"), grid_file().str());
  write_grid("three", grid, in_three);
  EXPECT_EQ(read_file("three").size(), grid_file().str().size() + 4 + 6 * 8);
  write_grid("copy", read_grid("three"), in_two);
  EXPECT_EQ(read_file("copy"), grid_file().str());
  GridReader reader("grid");
  const Block part = reader.read(0, {.first = {1, 1, 0}});
  EXPECT_THAT(list_of(part.x), ElementsAre(2, 3));
  EXPECT_THAT(list_of(part.z), ElementsAre(0, 0));
}

TEST_F(FrontPlanes, AreSolutionsWithoutThirdMomentum) {
  write_file("flow", flow_file());
  const Solution flow = read_solution("flow");
  EXPECT_EQ(flow.form.coding.dimensions, Dimensions::two);
  const auto& variables = flow.blocks.at(0).variables;
  ASSERT_EQ(variables.size(), 5U);
  EXPECT_EQ(variables[2][1], 3.1);
  EXPECT_THAT(list_of(variables[3]), Each(0));
  EXPECT_EQ(variables[4][1], 4.1);
  write_solution("copy", flow);
  EXPECT_EQ(read_file("copy"), flow_file().str());
  write_solution("three", flow, {.coding = in_three});
  EXPECT_EQ(list_of(read_solution("three").blocks.at(0).variables.at(4)), list_of(variables[4]));
  write_solution("copy", read_solution("three"), {.coding = in_two});
  EXPECT_EQ(read_file("copy"), flow_file().str());
  SolutionReader reader("flow");
  for (const std::int32_t number : {5, 4, 1}) {
    EXPECT_EQ(list_of(reader.read(0, FlowArray{number})),
              list_of(variables[static_cast<std::size_t>(number - 1)]));
  }
}

TEST_F(FrontPlanes, HaveNoPlaceForTheThirdDimension) {
  write_file("grid", grid_file());
  write_file("flow", flow_file());
  Grid grid = read_grid("grid");
  grid.blocks[0].z = Reals(Array<double>(6, 0.25));
  EXPECT_THAT(error_of([&] { write_grid("out", grid); }).what(), HasSubstr("z other than 0"));
  grid.blocks[0].extents = {3, 1, 2};
  EXPECT_THAT(error_of([&] { GridWriter("out", grid.form, grid.extents()); }).what(),
              HasSubstr("a k extent of 1 in two dimensions"));
  Solution flow = read_solution("flow");
  flow.blocks[0].variables[3] = Reals(Array<double>(6, 0.25));
  EXPECT_THAT(error_of([&] { write_solution("out", flow); }).what(),
              HasSubstr("a third momentum other than 0"));
  EXPECT_FALSE(exists("out"));
}

TEST_F(FrontPlanes, HaveNoOtherLayouts) {
  write_file("flow", flow_file());
  const Solution flow = read_solution("flow");
  const auto to_layout_1 = [&] { write_solution("out", flow, {.layout = Layout::time_step}); };
  EXPECT_THAT(error_of(to_layout_1).what(), HasSubstr("layout 1 has no files of two dimensions"));
  RestartForm form = flow.form;
  form.layout = Layout::bare;
  const auto as_layout_102 = [&] {
    static_cast<void>(read_solution("flow", {.form = stated_as(form)}));
  };
  EXPECT_THAT(error_of(as_layout_102).what(), HasSubstr("layout 102 has no files"));
}

}  // namespace
}  // namespace p3dgrid
