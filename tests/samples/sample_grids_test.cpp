/// Real grid files. The tests skip without a folder of them.

#include <gtest/gtest.h>

#include <string>

#include "mod_p3dgrid/run.hpp"
#include "samples_folder.hpp"
#include "support/grid.hpp"
#include "support/library_grid.hpp"
#include "support/run_program.hpp"
#include "support/scratch_directory.hpp"

namespace interop {
namespace {

struct Sample {
  const char* name;
  const char* file;
  GridLayout layout;
  std::vector<Extents> extents;
};

constexpr GridLayout text{1, false, false, false};
constexpr GridLayout text_multiblock{1, false, true, false};

std::vector<Sample> readable_samples() {
  const std::vector<Extents> multi{{8, 12, 12}, {8, 12, 12}};
  return {
      {"unformatted_double", "vtk_data/multi-bin.xyz", {0, true, true, false}, multi},
      {"binary_double", "vtk_data/multi-bin-C.xyz", {2, true, true, false}, multi},
      {"short_text_lines", "vtk_data/multi-ascii.xyz", text_multiblock, multi},
      {"repeats_and_commas",
       "cfl3d/ramp_embed.fmt",
       text_multiblock,
       {{2, 73, 45}, {2, 33, 21}, {2, 33, 25}, {2, 29, 21}, {2, 49, 25}, {2, 29, 29}}},
      {"fixed_columns", "cfl3d/flatplate_grdflat5.fmt", text, {{65, 97, 2}}},
      {"plane_as_one_repeat", "cfl3d/flatplateskew_grdflat5.fmt", text, {{65, 97, 2}}},
      {"one_block_with_count", "turbmodels/flatplate_35x25.p3dfmt", text_multiblock, {{2, 35, 25}}},
      {"binary_double_in_two_dimensions",
       "vtk_data/multi-bin-2D.xyz",
       {2, true, true, false, true},
       {{11, 17, 1}, {11, 17, 1}}},
      {"text_in_two_dimensions",
       "turbmodels/flatplate_35x25.p2dfmt",
       {1, false, true, false, true},
       {{35, 25, 1}}},
  };
}

/// Files of the other byte order.
std::vector<Sample> foreign_samples() {
  return {
      {"binary_single", "vtk_data/bluntfinxyz.bin", {2, false, false, false}, {}},
      {"unformatted_double", "turbmodels/nak_a_fine_65.p3d", {0, true, true, false}, {}},
  };
}

using SampleTest = SampleFileTest<Sample>;

class ReadableSample : public SampleTest {};
INSTANTIATE_TEST_SUITE_P(Grids, ReadableSample, testing::ValuesIn(readable_samples()),
                         sample_name<Sample>);

TEST_P(ReadableSample, HasTheExtentsPublished) {
  const auto grid = read_with_library(path(), GetParam().layout);
  ASSERT_TRUE(grid.has_value()) << mod_p3dgrid::p3dlastfailure().describe();
  EXPECT_EQ(grid->extents, GetParam().extents);
}

TEST_P(ReadableSample, HeaderAgreesWithTheGrid) {
  const auto grid = read_with_library(path(), GetParam().layout);
  const auto totals = read_totals_with_library(path(), GetParam().layout);
  ASSERT_TRUE(grid.has_value() && totals.has_value());
  EXPECT_EQ(totals->blocks, static_cast<int>(grid->extents.size()));
  EXPECT_EQ(totals->points, static_cast<int>(grid->points()));
}

/// What a Fortran program reads from the file, rounded to single precision at the end as the
/// library does.
Grid<float> read_with_fortran(const std::string& path, const GridLayout& layout) {
  const ScratchDirectory scratch;
  const Finished finished = run_program(
      {GRID_PEER, "read", scratch.file("bits"), path, layout.encoding_name(),
       layout.precision_name(), layout.multiblock ? "yes" : "no", "no", layout.planar ? "2" : "3"});
  EXPECT_EQ(finished.status, 0) << finished.output;
  return layout.is_double ? narrowed(load_bits<double>(scratch.file("bits"), false))
                          : load_bits<float>(scratch.file("bits"), false);
}

TEST_P(ReadableSample, IsReadToTheBitsThatFortranReads) {
  if (std::string(GRID_PEER).empty()) GTEST_SKIP() << "no Fortran compiler";
  const auto grid = read_with_library(path(), GetParam().layout);
  ASSERT_TRUE(grid.has_value()) << mod_p3dgrid::p3dlastfailure().describe();
  expect_same_bits(*grid, read_with_fortran(path(), GetParam().layout));
}

class ForeignSample : public SampleTest {};
INSTANTIATE_TEST_SUITE_P(Grids, ForeignSample, testing::ValuesIn(foreign_samples()),
                         sample_name<Sample>);

TEST_P(ForeignSample, FailsToReadInItsOwnLayout) {
  EXPECT_FALSE(read_with_library(path(), GetParam().layout).has_value());
  EXPECT_EQ(mod_p3dgrid::p3dlastfailure().file, path());
  EXPECT_GT(mod_p3dgrid::p3dlastfailure().describe().size(), path().size());
}

TEST_P(ForeignSample, FailsToReadInAnyOtherLayout) {
  for (int flags = 0; flags < 24; ++flags) {
    const GridLayout layout{flags / 8, (flags & 4) != 0, (flags & 2) != 0, (flags & 1) != 0};
    EXPECT_FALSE(read_with_library(path(), layout).has_value()) << layout.name();
  }
}

}  // namespace
}  // namespace interop
