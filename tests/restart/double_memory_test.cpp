/// Every form of grids and restart files with arrays of doubles: read from bytes made by hand, and
/// written to the same bytes, in which double-precision files hold values that single precision
/// does not.

#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;

using Doubles = allocatable<double, 2>;

/// A value of a file as an array of doubles holds it.
double value_in(double value, bool wide) {
  return wide ? value : static_cast<double>(static_cast<float>(value));
}

class DoubleGrids : public InScratchFolder, public ::testing::WithParamInterface<GridForm> {
 protected:
  HandMadeGrid made{GetParam()};
  integer nblocks = 0;
  integer ndim = 0;
  Doubles xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;

  void read(const char* name) {
    const GridForm& form = GetParam();
    readp3dgrid(name, form.iformat, form.dblprec, nblocks, ndim, xyz, idim, jdim, kdim, iblank,
                form.iblank, form.multiblock);
  }
  void write(const char* name) {
    const GridForm& form = GetParam();
    writep3dgrid(name, form.iformat, form.dblprec, nblocks, ndim, xyz, idim, jdim, kdim, iblank,
                 form.iblank, form.multiblock);
  }
};

TEST_P(DoubleGrids, AreReadAndWrittenWithoutLoss) {
  const GridForm& form = GetParam();
  write_file("grid", made.bytes(false));
  read("grid");
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(vector_of(iblank), made.iblank());
  // The extents, the coordinates, the blanking values, and a staging array for single precision.
  const bool staged = form.iformat != 1 && !form.dblprec;
  EXPECT_EQ(count_calls("checkallocationerror"), 2 + (form.iblank ? 1 : 0) + (staged ? 1 : 0));
  integer point = 0;
  for (int b = 0; b < made.blocks(); ++b) {
    for (int p = 0; p < HandMadeGrid::points(b); ++p) {
      ++point;
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(xyz(c + 1, point),
                  value_in(HandMadeGrid::coordinate(b, c, p), form.dblprec || form.iformat == 1));
      }
    }
  }
  EXPECT_EQ(point, xyz.extent(2));
  calls.clear();
  write("written");
  EXPECT_EQ(count_calls("checkallocationerror"), staged ? 1 : 0);
  if (form.iformat != 1) {
    EXPECT_EQ(read_file("written"), made.bytes(false));
    return;
  }
  const std::vector<double> before = vector_of(xyz);
  for (auto* array : {&idim, &jdim, &kdim, &iblank}) array->deallocate();
  xyz.deallocate();
  read("written");
  EXPECT_EQ(vector_of(xyz), before);
}

INSTANTIATE_TEST_SUITE_P(AllForms, DoubleGrids, ::testing::ValuesIn(all_grid_forms()),
                         [](const auto& form) { return name_of(form.param); });

class DoubleRestarts : public InScratchFolder, public ::testing::WithParamInterface<RestartForm> {
 protected:
  DoubleRestarts() {
    const RestartForm& form = GetParam();
    set_sections(form.sections);
    if (form.layout == 3) mod_gridvars::numrstrtvar.fill(0);
    made.leading = !(form.layout == 100 && form.iformat != 1 && !form.dblprec);
    if (form.layout == 0 && form.dblprec) made.equation_set = 1;
  }

  HandMadeRestart made{GetParam()};
  Restart extents{GetParam().blocks};
  Doubles varvalues, auxvalues;

  void read(const char* name) {
    const RestartForm& form = GetParam();
    readp3drestart(name, form.iformat, form.dblprec, form.blocks, extents.blockpoints, varvalues,
                   auxvalues, extents.idim, extents.jdim, extents.kdim, form.layout,
                   form.multiblock);
  }
};

TEST_P(DoubleRestarts, AreReadAndWrittenWithoutLoss) {
  const RestartForm& form = GetParam();
  write_file("restart", made.bytes());
  read("restart");
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  const int variables = made.highest_variable();
  ASSERT_EQ(varvalues.extent(1), variables);
  ASSERT_EQ(varvalues.extent(2), made.all_points());
  if (form.iformat == 1) return;
  for (int p = 0; p < made.all_points(); ++p) {
    for (int v = 1; v <= variables; ++v) {
      ASSERT_EQ(varvalues(v, p + 1), value_in(HandMadeRestart::flow(v, p), form.wide()));
    }
  }
  const bool has_triplets = form.layout == 100 || form.layout == 101;
  const bool triplets_arrive = form.layout == 101 || (form.layout == 100 && form.wide());
  for (int p = 0; triplets_arrive && p < made.all_points(); ++p) {
    for (int c = 1; c <= 3; ++c) {
      ASSERT_EQ(auxvalues(c, p + 1), value_in(HandMadeRestart::triplet(c, p), form.wide()));
    }
  }
  if (form.layout == 0 || (has_triplets && !triplets_arrive)) return;
  if (form.layout == 101) iflag(1) = 999;
  writep3drestart("written", form.iformat, form.dblprec, form.blocks, form.blocks, varvalues,
                  auxvalues, extents.idim, extents.jdim, extents.kdim, form.layout,
                  form.multiblock);
  p3dcloseunit(301);
  EXPECT_EQ(read_file("written"), made.bytes());
}

INSTANTIATE_TEST_SUITE_P(AllForms, DoubleRestarts, ::testing::ValuesIn(all_restart_forms()),
                         [](const auto& form) { return name_of(form.param); });

TEST_F(InScratchFolder, OneVariableOfDoublesIsStreamedWithoutLoss) {
  const RestartForm form{.layout = 1, .dblprec = true};
  const HandMadeRestart made(form);
  const Restart extents(form.blocks);
  set_sections(form.sections);
  write_file("restart", made.bytes());
  Doubles flow;
  ASSERT_EQ(flow.allocate(2, made.all_points()), allocation_done);
  for (integer v = 1; v <= 5; ++v) {
    readnextp3dvar(v, "restart", 0, true, form.blocks, extents.blockpoints, flow, extents.idim,
                   extents.jdim, extents.kdim, form.layout, true);
    for (int p = 0; p < made.all_points(); ++p) {
      ASSERT_EQ(flow(1, p + 1), HandMadeRestart::flow(v, p));
    }
    calls.clear();
    writenextp3dvar(v, "v", true, form.blocks, {}, flow, extents.idim, extents.jdim, extents.kdim);
    EXPECT_EQ(count_calls("checkallocationerror"), 0);
  }
  combinep3dvarfiles(Doubles(), "out", 0, true, 0, form.blocks, extents.idim, extents.jdim,
                     extents.kdim, form.layout, true);
  EXPECT_EQ(read_file("out"), made.bytes());
}

TEST_F(InScratchFolder, TextOfStreamedDoublesHasAllTheirDigits) {
  const std::vector<integer> one{1};
  set_sections({{1, 1}});
  // A double that is also a single, and whose shortest digits as a single mean another double.
  const double value = static_cast<double>(0.1F);
  writenextp3dvar(1, "v", true, 1, {}, array_view<const double, 2>(&value, 1, 1), one, one, one);
  combinep3dvarfiles(Doubles(), "out", 1, true, 0, 1, one, one, one, 102, true);
  EXPECT_EQ(std::stod(read_file("out")), value);
}

}  // namespace
}  // namespace mod_p3dgrid
