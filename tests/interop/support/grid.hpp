#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace interop {

using Extents = std::array<std::int32_t, 3>;

[[nodiscard]] inline std::size_t points_of(const Extents& extents) {
  return static_cast<std::size_t>(extents[0]) * static_cast<std::size_t>(extents[1]) *
         static_cast<std::size_t>(extents[2]);
}

/// A grid in the order of its file: for each block all x, all y, all z. `Real` is the kind of the
/// file, `float` or `double`.
template <class Real>
struct Grid {
  std::vector<Extents> extents;
  std::vector<Real> coordinates;
  std::vector<std::int32_t> iblank;  ///< one for each point, or empty

  [[nodiscard]] std::size_t points() const {
    std::size_t total = 0;
    for (const Extents& block : extents) total += points_of(block);
    return total;
  }
};

/// Saves a grid as the bit patterns of its values, one integer in decimal per line: block count,
/// extents, and for each block its coordinates and blanking values.
template <class Real>
void save_bits(const std::string& path, const Grid<Real>& grid);

/// Loads what `save_bits` or the Fortran side has saved. Throws if the file does not hold a grid.
template <class Real>
[[nodiscard]] Grid<Real> load_bits(const std::string& path, bool has_iblank);

/// The grid as it is after its coordinates have been rounded to single precision.
[[nodiscard]] Grid<float> narrowed(const Grid<double>& grid);

/// Fails the current test unless both grids are the same, bit for bit. With `any_nan` NaNs count as
/// the same whatever their bits.
void expect_same_bits(const Grid<float>& actual, const Grid<float>& expected, bool any_nan = false);
void expect_same_bits(const Grid<double>& actual, const Grid<double>& expected,
                      bool any_nan = false);

}  // namespace interop
