#pragma once

#include <string>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace test_support {

/// One way of holding a grid in a file.
struct GridForm {
  int iformat;
  bool dblprec;
  bool multiblock;
  bool iblank;
};

/// Several blocks without blanking in single precision.
inline constexpr GridForm unformatted{0, false, true, false};
inline constexpr GridForm formatted{1, false, true, false};
inline constexpr GridForm binary{2, false, true, false};

/// Every encoding, precision, block-count record and blanking.
[[nodiscard]] inline std::vector<GridForm> all_grid_forms() {
  std::vector<GridForm> all;
  for (const int iformat : {0, 1, 2}) {
    for (const bool dblprec : {false, true}) {
      for (const bool multiblock : {false, true}) {
        for (const bool iblank : {false, true})
          all.push_back({iformat, dblprec, multiblock, iblank});
      }
    }
  }
  return all;
}

/// Name for a test of one form.
[[nodiscard]] inline std::string name_of(const GridForm& form) {
  return std::string(form.iformat == 0   ? "Unformatted"
                     : form.iformat == 1 ? "Formatted"
                                         : "Binary") +
         (form.dblprec ? "Double" : "Single") + (form.multiblock ? "Multi" : "One") +
         (form.iblank ? "Blanked" : "");
}

/// The arguments of the grid operations, and what they leave behind.
struct Grid {
  mod_p3dgrid::integer nblocks = -77;
  mod_p3dgrid::integer ndim = -77;
  mod_p3dgrid::allocatable<float, 2> xyz;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> idim;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> jdim;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> kdim;
  mod_p3dgrid::allocatable<mod_p3dgrid::integer, 1> iblank;

  void read(const char* name, const GridForm& form) {
    mod_p3dgrid::readp3dgrid(name, form.iformat, form.dblprec, nblocks, ndim, xyz, idim, jdim, kdim,
                             iblank, form.iblank, form.multiblock);
  }
  void write(const char* name, const GridForm& form) const {
    mod_p3dgrid::writep3dgrid(name, form.iformat, form.dblprec, nblocks, ndim, xyz, idim, jdim,
                              kdim, iblank, form.iblank, form.multiblock);
  }
};

template <class T, std::size_t Rank>
[[nodiscard]] std::vector<T> vector_of(const mod_p3dgrid::allocatable<T, Rank>& array) {
  return {array.span().begin(), array.span().end()};
}

/// Two blocks of 2 x 2 x 2 and 3 x 1 x 1 points, or the first alone, put into bytes by hand. The
/// coordinates are no round numbers; in a double-precision file they are none of single precision
/// either.
class HandMadeGrid {
 public:
  explicit HandMadeGrid(GridForm form) : form_(form) {}

  [[nodiscard]] int blocks() const { return form_.multiblock ? 2 : 1; }
  [[nodiscard]] static std::vector<int> extents(int block) {
    return block == 0 ? std::vector{2, 2, 2} : std::vector{3, 1, 1};
  }
  [[nodiscard]] static int points(int block) { return block == 0 ? 8 : 3; }

  /// Coordinate `c` of point `p` (from 0) of a block.
  [[nodiscard]] static double coordinate(int block, int c, int p) {
    return (c == 1 ? -1.0 : 1.0) * (1.0 / 3.0 + block * 100 + c * 10 + p);
  }
  [[nodiscard]] static int blanking(int block, int p) { return block * 10 - p; }

  /// The file as bytes; `single_values` rounds what a double-precision file holds.
  [[nodiscard]] std::string bytes(bool single_values) const;
  [[nodiscard]] std::vector<float> xyz() const;
  [[nodiscard]] std::vector<int> iblank() const;

 private:
  [[nodiscard]] std::string text() const;
  GridForm form_;
};

}  // namespace test_support
