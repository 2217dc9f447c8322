/// Text of the library read by the Fortran run-time library, to the same bits.

#include <gtest/gtest.h>

#include "mod_p3dgrid/run.hpp"
#include "state/unit.hpp"
#include "support/awkward_values.hpp"
#include "support/grid.hpp"
#include "support/library_grid.hpp"
#include "support/run_program.hpp"
#include "support/scratch_directory.hpp"

namespace interop {
namespace {

namespace recordio = mod_p3dgrid::recordio;
using mod_p3dgrid::integer;

/// Many values travel as the coordinates of one block.
constexpr integer points = 20'000;

Finished read_with_fortran(const ScratchDirectory& scratch, const char* precision) {
  return run_program({GRID_PEER, "read", scratch.file("bits"), scratch.file("grid"), "formatted",
                      precision, "no", "no", "3"});
}

TEST(NumberInterop, FortranReadsSinglesToTheSameBits) {
  const Grid<float> grid{{{points, 1, 1}}, awkward_floats(3 * points), {}};
  const ScratchDirectory scratch;
  write_with_library(scratch.file("grid"), {1, false, false, false}, grid);
  const Finished finished = read_with_fortran(scratch, "single");
  ASSERT_EQ(finished.status, 0) << finished.output;
  expect_same_bits(load_bits<float>(scratch.file("bits"), false), grid);
}

/// No grid is written in doubles as text, hence the records by hand.
TEST(NumberInterop, FortranReadsDoublesToTheSameBits) {
  const Grid<double> grid{{{points, 1, 1}}, awkward_doubles(3 * points), {}};
  const ScratchDirectory scratch;
  mod_p3dgrid::p3dsetpaths([path = scratch.file("grid")](std::string_view) { return path; });
  constexpr integer formatted = 1;
  const mod_p3dgrid::Unit unit(99, formatted);
  unit.open("grid", recordio::OpenStatus::unknown);
  unit.write({recordio::values(grid.extents[0].data(), 3)});
  unit.write({recordio::values(grid.coordinates.data(), 3 * points)});
  unit.close();
  const Finished finished = read_with_fortran(scratch, "double");
  ASSERT_EQ(finished.status, 0) << finished.output;
  expect_same_bits(load_bits<double>(scratch.file("bits"), false), grid);
}

}  // namespace
}  // namespace interop
