/// Writes Tecplot files with the library: with and without blanking.
///   write_tecplot DIRECTORY
/// Value r of point p of block b, all from 0, is (1000 b + 100 r + p) / 7, coordinates first; the
/// blanking value is p modulo 3. The reader computes the same.

#include <MOD_P3DReader.hpp>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using mod_p3dgrid::array_view;
using mod_p3dgrid::integer;

struct Values {
  std::vector<double> xyz;
  std::vector<double> flow;
  std::vector<integer> iblank;
};

Values values_for(const std::vector<integer>& points) {
  Values values;
  for (std::size_t b = 0; b < points.size(); ++b) {
    for (integer p = 0; p < points[b]; ++p) {
      for (int r = 0; r < 8; ++r) {
        const double value = (1000.0 * static_cast<double>(b) + 100.0 * r + p) / 7.0;
        (r < 3 ? values.xyz : values.flow).push_back(value);
      }
      values.iblank.push_back(p % 3);
    }
  }
  return values;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: write_tecplot DIRECTORY\n", stderr);
    return 1;
  }
  const std::string directory = argv[1];
  mod_p3dgrid::p3dsetpaths(
      [&](std::string_view name) { return directory + "/" + std::string(name); });
  const std::vector<integer> idim{5, 2, 1};
  const std::vector<integer> jdim{4, 7, 1};
  const std::vector<integer> kdim{3, 1, 6};
  const Values values = values_for({60, 14, 6});
  const std::int64_t points = 80;
  for (const bool blanked : {false, true}) {
    mod_p3dgrid::writetecplotfile_p3d(blanked ? "blanked.dat" : "plain.dat", 3,
                                      array_view<const double, 2>(values.xyz.data(), 3, points),
                                      array_view<const double, 2>(values.flow.data(), 5, points),
                                      idim, jdim, kdim, values.iblank, blanked);
  }
  mod_p3dgrid::p3dcloseunit(594);
}
