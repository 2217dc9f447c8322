/// Reads a grid and its solution one variable at a time, writes each variable to a temporary file,
/// combines them into a new solution file and writes both as Tecplot ASCII.
///
///     stream GRID SOLUTION OUT TECPLOT
///
/// Grid and solution are unformatted, in single precision, with a block count.

#include <MOD_P3DReader.hpp>
#include <cstdio>
#include <vector>

using namespace mod_p3dgrid;

constexpr integer unformatted = 0;
constexpr integer solution_layout = 2;  // PLOT3D solution file: five variables
constexpr integer variables = 5;

static void stream(const FileName& grid_file, const FileName& solution, const FileName& out,
                   const FileName& tecplot) {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  readp3dgrid(grid_file, unformatted, false, nblocks, ndim, xyz, idim, jdim, kdim, iblank, false,
              true);
  // Halts the run, and says why, if the two do not belong together.
  checkp3drstrtheader(grid_file, unformatted, solution, unformatted, false, solution_layout, true);

  const std::int64_t points = xyz.extent(2);
  const std::vector<integer> blockpoints{static_cast<integer>(points)};  // only the sum counts
  std::vector<float> one(static_cast<std::size_t>(points));
  std::vector<double> flow(one.size() * variables);
  for (integer v = 1; v <= variables; ++v) {
    readnextp3dvar(v, solution, unformatted, false, nblocks, blockpoints,
                   array_view<float, 2>(one.data(), 1, points), idim, jdim, kdim, solution_layout,
                   true);
    // Here a host would change the variable.
    writenextp3dvar(v, "variable", false, nblocks, blockpoints,
                    array_view<const float, 2>(one.data(), 1, points), idim, jdim, kdim);
    for (std::size_t p = 0; p < one.size(); ++p) {
      flow[p * variables + static_cast<std::size_t>(v - 1)] = static_cast<double>(one[p]);
    }
  }
  combinep3dvarfiles({}, out, unformatted, false, nblocks, nblocks, idim, jdim, kdim,
                     solution_layout, true);

  const std::vector<double> coordinates(xyz.span().begin(), xyz.span().end());
  writetecplotfile_p3d(tecplot, nblocks, array_view<const double, 2>(coordinates.data(), 3, points),
                       array_view<const double, 2>(flow.data(), variables, points), idim, jdim,
                       kdim, iblank, false);
}

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: stream GRID SOLUTION OUT TECPLOT\n", stderr);
    return 2;
  }
  stream(argv[1], argv[2], argv[3], argv[4]);
}
