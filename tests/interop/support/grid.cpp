#include "support/grid.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <type_traits>

#include "support/bits_file.hpp"

namespace interop {
namespace {

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::int32_t, std::int64_t>;

template <class Real>
void compare(const Grid<Real>& actual, const Grid<Real>& expected, bool any_nan) {
  ASSERT_EQ(actual.extents, expected.extents);
  ASSERT_EQ(actual.coordinates.size(), expected.coordinates.size());
  for (std::size_t i = 0; i < expected.coordinates.size(); ++i) {
    const Real value = actual.coordinates[i];
    const Real wanted = expected.coordinates[i];
    if (any_nan && std::isnan(value) && std::isnan(wanted)) continue;
    ASSERT_EQ(std::bit_cast<BitsOf<Real>>(value), std::bit_cast<BitsOf<Real>>(wanted))
        << "coordinate " << i << ": " << value << " instead of " << wanted;
  }
  ASSERT_EQ(actual.iblank, expected.iblank);
}

}  // namespace

template <class Real>
void save_bits(const std::string& path, const Grid<Real>& grid) {
  std::ofstream file(path);
  file << grid.extents.size() << '\n';
  for (const Extents& block : grid.extents) {
    for (const std::int32_t extent : block) file << extent << '\n';
  }
  std::size_t first = 0;
  for (const Extents& block : grid.extents) {
    const std::size_t points = points_of(block);
    for (std::size_t i = 3 * first; i < 3 * (first + points); ++i) {
      file << std::bit_cast<BitsOf<Real>>(grid.coordinates[i]) << '\n';
    }
    for (std::size_t i = first; i < first + points && !grid.iblank.empty(); ++i) {
      file << grid.iblank[i] << '\n';
    }
    first += points;
  }
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

template <class Real>
Grid<Real> load_bits(const std::string& path, bool has_iblank) {
  std::ifstream file(path);
  Grid<Real> grid;
  grid.extents.resize(static_cast<std::size_t>(next_integer(file)));
  for (Extents& block : grid.extents) {
    for (std::int32_t& extent : block) extent = static_cast<std::int32_t>(next_integer(file));
  }
  for (const Extents& block : grid.extents) {
    const std::size_t points = points_of(block);
    for (std::size_t i = 0; i < 3 * points; ++i) {
      grid.coordinates.push_back(
          std::bit_cast<Real>(static_cast<BitsOf<Real>>(next_integer(file))));
    }
    for (std::size_t i = 0; i < points && has_iblank; ++i) {
      grid.iblank.push_back(static_cast<std::int32_t>(next_integer(file)));
    }
  }
  expect_no_more(file);
  return grid;
}

template void save_bits(const std::string&, const Grid<float>&);
template void save_bits(const std::string&, const Grid<double>&);
template Grid<float> load_bits(const std::string&, bool);
template Grid<double> load_bits(const std::string&, bool);

Grid<float> narrowed(const Grid<double>& grid) {
  Grid<float> result{grid.extents, {}, grid.iblank};
  for (const double value : grid.coordinates) {
    result.coordinates.push_back(static_cast<float>(value));
  }
  return result;
}

void expect_same_bits(const Grid<float>& actual, const Grid<float>& expected, bool any_nan) {
  compare(actual, expected, any_nan);
}
void expect_same_bits(const Grid<double>& actual, const Grid<double>& expected, bool any_nan) {
  compare(actual, expected, any_nan);
}

}  // namespace interop
