/// Writes a small grid in the current directory, reads it back, and ends with 0 if it is the same.

#include <algorithm>
#include <cstdio>
#include <vector>

#include "MOD_P3DReader.hpp"

namespace {

using mod_p3dgrid::allocatable;
using mod_p3dgrid::integer;

constexpr integer unformatted = 0;
constexpr integer coordinates = 3;
constexpr integer points = 11;
const std::vector<integer> idim{2, 3};
const std::vector<integer> jdim{2, 1};
const std::vector<integer> kdim{2, 1};

std::vector<float> some_coordinates() {
  std::vector<float> xyz(coordinates * points);
  for (std::size_t i = 0; i < xyz.size(); ++i) xyz[i] = 0.25F * static_cast<float>(i) - 3;
  return xyz;
}

bool header_is_right() {
  integer nblocks = 0;
  integer ndim = 0;
  integer npoints = 0;
  mod_p3dgrid::readp3dgridheader("host.xyz", unformatted, nblocks, ndim, true, npoints);
  return nblocks == 2 && ndim == coordinates && npoints == points;
}

bool grid_is(const std::vector<float>& expected) {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim_read, jdim_read, kdim_read, iblank;
  mod_p3dgrid::readp3dgrid("host.xyz", unformatted, false, nblocks, ndim, xyz, idim_read, jdim_read,
                           kdim_read, iblank, false, true);
  return nblocks == 2 && std::ranges::equal(idim_read.span(), idim) &&
         std::ranges::equal(jdim_read.span(), jdim) && std::ranges::equal(kdim_read.span(), kdim) &&
         std::ranges::equal(xyz.span(), expected);
}

}  // namespace

int main() {
  const std::vector<float> xyz = some_coordinates();
  mod_p3dgrid::p3dsetdebug(false);
  mod_p3dgrid::writep3dgrid("host.xyz", unformatted, false, 2, coordinates,
                            {xyz.data(), coordinates, points}, idim, jdim, kdim, {}, false, true);
  const bool right = header_is_right() && grid_is(xyz);
  std::puts(right ? "the grid is the same" : "the grid differs");
  return right ? 0 : 1;
}
