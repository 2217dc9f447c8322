/// Grids exchanged between the front and a Fortran program, both ways, to the last bit of the
/// precision of the file.

#include <gtest/gtest.h>

#include <limits>

#include "p3dgrid/grid.hpp"
#include "support/file_bytes.hpp"
#include "support/fortran_grid.hpp"

namespace interop {
namespace {

p3dgrid::GridForm form_of(const GridLayout& layout, p3dgrid::MarkerBytes markers) {
  return {.coding = {.encoding = static_cast<p3dgrid::Encoding>(layout.encoding),
                     .precision = layout.is_double ? p3dgrid::Precision::double_precision
                                                   : p3dgrid::Precision::single_precision,
                     .marker_bytes = markers,
                     .dimensions =
                         layout.planar ? p3dgrid::Dimensions::two : p3dgrid::Dimensions::three},
          .multiblock = layout.multiblock,
          .iblank = layout.has_iblank};
}

template <class Real>
Grid<Real> from_front(const p3dgrid::Grid& grid) {
  Grid<Real> result;
  for (const p3dgrid::Block& block : grid.blocks) {
    result.extents.push_back({block.extents.i, block.extents.j, block.extents.k});
    for (const p3dgrid::Reals* reals : {&block.x, &block.y, &block.z}) {
      const auto values = reals->span<Real>();
      result.coordinates.insert(result.coordinates.end(), values.begin(), values.end());
    }
    result.iblank.insert(result.iblank.end(), block.iblank.begin(), block.iblank.end());
  }
  return result;
}

template <class Real>
p3dgrid::Grid for_front(const Grid<Real>& grid) {
  p3dgrid::Grid result;
  auto value = grid.coordinates.begin();
  auto iblank = grid.iblank.begin();
  for (const Extents& extents : grid.extents) {
    p3dgrid::Block& block = result.blocks.emplace_back();
    block.extents = {extents[0], extents[1], extents[2]};
    const auto points = static_cast<std::ptrdiff_t>(points_of(extents));
    for (p3dgrid::Reals* reals : {&block.x, &block.y, &block.z}) {
      *reals = p3dgrid::Reals(p3dgrid::Array<Real>(value, value + points));
      value += points;
    }
    if (grid.iblank.empty()) continue;
    block.iblank.assign(iblank, iblank + points);
    iblank += points;
  }
  return result;
}

/// The other side reads the decimals of text in double precision, as the front does.
GridLayout as_in_memory(GridLayout layout) {
  layout.is_double = layout.is_double || layout.is_text();
  return layout;
}

struct Peer {
  const char* program;
  p3dgrid::MarkerBytes markers;
};
constexpr Peer usual{GRID_PEER, p3dgrid::MarkerBytes::four};
constexpr Peer wide_peer{GRID_PEER_WIDE, p3dgrid::MarkerBytes::eight};

template <class Real>
void expect_front_reads_fortran(const Peer& peer, const GridLayout& layout) {
  const FortranGrid fortran(peer.program);
  const auto grid = awkward_grid<Real>(layout);
  fortran.write(layout, grid);
  const p3dgrid::Grid read =
      p3dgrid::read_grid(fortran.grid_file(), stated_as(form_of(layout, peer.markers)));
  if (layout.is_text() && !layout.is_double) {
    expect_same_bits(from_front<double>(read), fortran.read<double>(as_in_memory(layout)));
  } else {
    expect_same_bits(from_front<Real>(read), grid);
  }
}

template <class Real>
void expect_fortran_reads_front(const Peer& peer, const GridLayout& layout) {
  const FortranGrid fortran(peer.program);
  const auto grid = awkward_grid<Real>(layout);
  p3dgrid::write_grid(fortran.grid_file(), for_front(grid),
                      stated_as(form_of(layout, peer.markers)));
  expect_same_bits(fortran.read<Real>(layout), grid);
}

template <class Real>
void expect_same_files(const Peer& peer, const GridLayout& layout) {
  const FortranGrid fortran(peer.program);
  const auto grid = awkward_grid<Real>(layout);
  fortran.write(layout, grid);
  const std::string expected = bytes_of(fortran.grid_file());
  ASSERT_FALSE(expected.empty());
  p3dgrid::write_grid(fortran.grid_file(), for_front(grid),
                      stated_as(form_of(layout, peer.markers)));
  EXPECT_TRUE(bytes_of(fortran.grid_file()) == expected);
}

class FrontGrid : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Front, FrontGrid, testing::ValuesIn(layouts_of({0, 1, 2})), layout_name);

TEST_P(FrontGrid, HasTheBitsThatFortranWrote) {
  GetParam().is_double ? expect_front_reads_fortran<double>(usual, GetParam())
                       : expect_front_reads_fortran<float>(usual, GetParam());
}

TEST_P(FrontGrid, IsReadByFortranToTheLastBit) {
  GetParam().is_double ? expect_fortran_reads_front<double>(usual, GetParam())
                       : expect_fortran_reads_front<float>(usual, GetParam());
}

/// Layouts whose bytes leave no choice.
class FrontGridBytes : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Front, FrontGridBytes, testing::ValuesIn(layouts_of({0, 2})), layout_name);

TEST_P(FrontGridBytes, AreThoseOfFortransFile) {
  GetParam().is_double ? expect_same_files<double>(usual, GetParam())
                       : expect_same_files<float>(usual, GetParam());
}

class FrontWideMarkers : public testing::TestWithParam<GridLayout> {};
INSTANTIATE_TEST_SUITE_P(Front, FrontWideMarkers, testing::ValuesIn(layouts_of({0})), layout_name);

TEST_P(FrontWideMarkers, HaveTheBitsAndBytesOfFortran) {
  if (GetParam().is_double) {
    expect_front_reads_fortran<double>(wide_peer, GetParam());
    expect_same_files<double>(wide_peer, GetParam());
  } else {
    expect_front_reads_fortran<float>(wide_peer, GetParam());
    expect_same_files<float>(wide_peer, GetParam());
  }
}

/// Infinities and NaNs in text, where a NaN of Fortran has no bits of its own.
TEST(FrontText, OfValuesThatAreNotFiniteIsExchanged) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const Grid<double> grid{
      {{2, 2, 1}}, {infinity, -infinity, nan, 1, -0.0, nan, infinity, -nan, 0.1, 2, nan, 3}, {}};
  constexpr GridLayout text{1, true, false, false};
  const FortranGrid fortran(GRID_PEER);
  fortran.write(text, grid);
  const auto form = stated_as(form_of(text, p3dgrid::MarkerBytes::four));
  expect_same_bits(from_front<double>(p3dgrid::read_grid(fortran.grid_file(), form)), grid, true);
  p3dgrid::write_grid(fortran.grid_file(), for_front(grid), form);
  expect_same_bits(fortran.read<double>(text), grid, true);
}

}  // namespace
}  // namespace interop
