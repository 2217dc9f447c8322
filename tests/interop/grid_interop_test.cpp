/// Grid files exchanged with a Fortran program, both ways, bit for bit, in every layout. The two
/// sides agree on the values through files of bit patterns.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "recordio/unformatted_record.hpp"
#include "support/file_bytes.hpp"
#include "support/fortran_grid.hpp"
#include "support/grid.hpp"
#include "support/host_gridvars.hpp"
#include "support/library_grid.hpp"
#include "support/scratch_directory.hpp"

namespace interop {
namespace {

Grid<double> widened(const Grid<float>& grid) {
  return {grid.extents, {grid.coordinates.begin(), grid.coordinates.end()}, grid.iblank};
}

class FortranSide : public FortranGrid {
 public:
  explicit FortranSide(std::string program = GRID_PEER) : FortranGrid(std::move(program)) {}
};

/// What the library must get from the file that the Fortran side has written. In text the file
/// holds decimals: what counts is what the other side reads from them in single precision.
template <class Real>
Grid<float> expected_of(const FortranSide& fortran, const GridLayout& layout,
                        const Grid<Real>& grid) {
  if constexpr (sizeof(Real) == sizeof(float)) {
    return grid;
  } else {
    if (!layout.is_text()) return narrowed(grid);
    GridLayout as_single = layout;
    as_single.is_double = false;
    return fortran.read<float>(as_single);
  }
}

template <class Real>
void expect_library_reads_fortran(const FortranSide& fortran, const GridLayout& layout) {
  const auto grid = awkward_grid<Real>(layout);
  fortran.write(layout, grid);
  const auto result = read_with_library(fortran.grid_file(), layout);
  ASSERT_TRUE(result.has_value());
  expect_same_bits(*result, expected_of(fortran, layout, grid));
  const auto totals = read_totals_with_library(fortran.grid_file(), layout);
  ASSERT_TRUE(totals.has_value());
  EXPECT_EQ(totals->blocks, static_cast<int>(grid.extents.size()));
  EXPECT_EQ(totals->points, static_cast<int>(grid.points()));
}

void expect_fortran_reads_library(const FortranSide& fortran, const GridLayout& layout) {
  const Grid<float> grid = awkward_grid<float>(layout);
  write_with_library(fortran.grid_file(), layout, grid);
  if (layout.is_double && !layout.is_text()) {
    expect_same_bits(fortran.read<double>(layout), widened(grid));
  } else {
    GridLayout as_single = layout;  // the precision of a text file is the reader's choice
    as_single.is_double = false;
    expect_same_bits(fortran.read<float>(as_single), grid);
  }
}

void expect_same_files(const FortranSide& fortran, const GridLayout& layout) {
  const Grid<float> grid = awkward_grid<float>(layout);
  if (layout.is_double) {
    fortran.write(layout, widened(grid));
  } else {
    fortran.write(layout, grid);
  }
  const ScratchDirectory scratch;
  write_with_library(scratch.file("grid"), layout, grid);
  const std::string expected = bytes_of(fortran.grid_file());
  ASSERT_FALSE(expected.empty());
  EXPECT_TRUE(bytes_of(scratch.file("grid")) == expected);
}

class EveryLayout : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Grid, EveryLayout, testing::ValuesIn(layouts_of({0, 1, 2})), layout_name);

TEST_P(EveryLayout, LibraryReadsWhatFortranWrote) {
  const FortranSide fortran;
  if (GetParam().is_double) {
    expect_library_reads_fortran<double>(fortran, GetParam());
  } else {
    expect_library_reads_fortran<float>(fortran, GetParam());
  }
}

TEST_P(EveryLayout, FortranReadsWhatLibraryWrote) {
  expect_fortran_reads_library(FortranSide(), GetParam());
}

/// Layouts whose bytes leave no choice.
class EveryByteLayout : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Grid, EveryByteLayout, testing::ValuesIn(layouts_of({0, 2})), layout_name);

TEST_P(EveryByteLayout, BothWriteTheSameBytes) {
  expect_same_files(FortranSide(), GetParam());
}

class EveryTextLayout : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Grid, EveryTextLayout, testing::ValuesIn(layouts_of({1})), layout_name);

TEST_P(EveryTextLayout, LibraryWritesLinesOf80ColumnsBehindABlank) {
  const ScratchDirectory scratch;
  write_with_library(scratch.file("grid"), GetParam(), awkward_grid<float>(GetParam()));
  std::ifstream file(scratch.file("grid"));
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  do {
    ASSERT_LE(line.size(), 80U) << line;
    ASSERT_TRUE(line.starts_with(' ')) << line;
  } while (std::getline(file, line));
}

/// Infinities and NaNs in text, where a NaN of Fortran has no bits of its own.
Grid<float> non_finite_grid() {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  return {{{2, 2, 1}},
          {infinity, -infinity, nan, 1, -0.0F, nan, infinity, -nan, -infinity, 2, nan, 3},
          {}};
}
constexpr GridLayout text{1, false, false, false};

TEST(NonFiniteText, LibraryReadsWhatFortranWrote) {
  const FortranSide fortran;
  fortran.write(text, non_finite_grid());
  const auto result = read_with_library(fortran.grid_file(), text);
  ASSERT_TRUE(result.has_value());
  expect_same_bits(*result, non_finite_grid(), true);
}

TEST(NonFiniteText, FortranReadsWhatLibraryWrote) {
  const FortranSide fortran;
  write_with_library(fortran.grid_file(), text, non_finite_grid());
  expect_same_bits(fortran.read<float>(text), non_finite_grid(), true);
}

/// Record markers of 8 bytes. Blocks beyond the limit for those of 4 are not split.
class WideMarkers : public testing::TestWithParam<GridLayout> {
 protected:
  WideMarkers() {
    mod_p3dgrid::recordio::set_subrecord_limit(16);
    marker_bytes() = p3dgrid::MarkerBytes::eight;
  }
  ~WideMarkers() override {
    mod_p3dgrid::recordio::set_subrecord_limit(mod_p3dgrid::recordio::default_subrecord_limit);
    marker_bytes() = p3dgrid::MarkerBytes::four;
  }
};
INSTANTIATE_TEST_SUITE_P(Records, WideMarkers, testing::ValuesIn(layouts_of({0})), layout_name);

TEST_P(WideMarkers, LibraryReadsWhatFortranWrote) {
  const FortranSide fortran(GRID_PEER_WIDE);
  if (GetParam().is_double) {
    expect_library_reads_fortran<double>(fortran, GetParam());
  } else {
    expect_library_reads_fortran<float>(fortran, GetParam());
  }
}

TEST_P(WideMarkers, BothWriteTheSameBytes) {
  expect_same_files(FortranSide(GRID_PEER_WIDE), GetParam());
}

struct SplitRecords {
  const char* program;
  std::int64_t limit;
  bool is_double;
};

/// Records in pieces so short that values straddle them, or of a common size.
class EverySplit : public testing::TestWithParam<SplitRecords> {
 protected:
  ~EverySplit() override {
    mod_p3dgrid::recordio::set_subrecord_limit(mod_p3dgrid::recordio::default_subrecord_limit);
  }
  [[nodiscard]] static GridLayout layout() { return {0, GetParam().is_double, true, true}; }
};
INSTANTIATE_TEST_SUITE_P(Records, EverySplit,
                         testing::Values(SplitRecords{GRID_PEER_SPLIT_16, 16, false},
                                         SplitRecords{GRID_PEER_SPLIT_16, 16, true},
                                         SplitRecords{GRID_PEER_SPLIT_1024, 1024, false},
                                         SplitRecords{GRID_PEER_SPLIT_1024, 1024, true}),
                         [](const auto& parameter) {
                           return std::to_string(parameter.param.limit) + "_bytes_" +
                                  (parameter.param.is_double ? "double" : "single");
                         });

TEST_P(EverySplit, LibraryReadsWhatFortranWrote) {
  const FortranSide fortran(GetParam().program);
  if (GetParam().is_double) {
    expect_library_reads_fortran<double>(fortran, layout());
  } else {
    expect_library_reads_fortran<float>(fortran, layout());
  }
  const FortranSide unsplit;
  unsplit.write(layout(), awkward_grid<float>(layout()));
  EXPECT_GT(std::filesystem::file_size(fortran.grid_file()),
            std::filesystem::file_size(unsplit.grid_file()))
      << "the Fortran program has split nothing";
}

TEST_P(EverySplit, FortranReadsWhatLibraryWrote) {
  mod_p3dgrid::recordio::set_subrecord_limit(GetParam().limit);
  expect_fortran_reads_library(FortranSide(), layout());
}

TEST_P(EverySplit, BothWriteTheSameBytes) {
  mod_p3dgrid::recordio::set_subrecord_limit(GetParam().limit);
  expect_same_files(FortranSide(GetParam().program), layout());
}

}  // namespace
}  // namespace interop
