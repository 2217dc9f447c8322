/// Reads grids and prints how many points each holds. It links `gridvars_minimal`, which continues
/// after a failed read, so it checks `p3dlastfailure` after each one.
///
///     points GRID...
///
/// The grids are unformatted, in single precision, with a block count. The exit status is 1 if one
/// cannot be read.

#include <MOD_P3DReader.hpp>
#include <cstdio>

using namespace mod_p3dgrid;

constexpr integer unformatted = 0;

/// False if the read has failed; standard error says why.
static bool show_points(const FileName& file) {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  p3dclearfailure();
  readp3dgrid(file, unformatted, false, nblocks, ndim, xyz, idim, jdim, kdim, iblank, false, true);
  if (p3dlastfailure().status != 0) return false;
  std::printf("%s: %lld points\n", p3dprintable(std::string(file.view())).c_str(),
              static_cast<long long>(xyz.extent(2)));
  return true;
}

int main(int argc, char** argv) {
  p3dsetmessages([](std::string_view) {});
  p3dsetwholerecords(true);  // a grid in double precision is not read as one in single precision
  bool all_read = true;
  for (int n = 1; n < argc; ++n) all_read = show_points(argv[n]) && all_read;
  return all_read ? 0 : 1;
}
