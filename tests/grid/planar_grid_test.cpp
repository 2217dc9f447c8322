#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Grids of two dimensions: blocks of 2 x 1 and 1 x 2 points.
class PlanarGrids : public InScratchFolder {
 protected:
  test_support::Grid grid;

  void SetUp() override {
    p3dsetcoding([](std::string_view) {
      return p3dgrid::StatedCoding{.dimensions = p3dgrid::Dimensions::two};
    });
  }

  static Bytes records(bool framed, std::initializer_list<Bytes> all) {
    Bytes file;
    for (const Bytes& one : all) framed ? file.record(one) : file.append(one);
    return file;
  }
  static Bytes single_precision(bool framed) {
    return records(
        framed, {Bytes().i4(2), Bytes().i4s({2, 1, 1, 2}), Bytes().r4s({1, 2, -1, -2}).i4s({1, 0}),
                 Bytes().r4s({3, 4, -3, -4}).i4s({-2, 1})});
  }
  static Bytes double_precision(bool framed) {
    return records(
        framed, {Bytes().i4(2), Bytes().i4s({2, 1, 1, 2}), Bytes().r8s({1, 2, -1, -2}).i4s({1, 0}),
                 Bytes().r8s({3, 4, -3, -4}).i4s({-2, 1})});
  }

  void expect_read(const GridForm& form) {
    grid = {};
    grid.read("grid", form);
    EXPECT_EQ(grid.nblocks, 2);
    EXPECT_EQ(grid.ndim, 3);
    EXPECT_THAT(vector_of(grid.idim), ElementsAre(2, 1));
    EXPECT_THAT(vector_of(grid.jdim), ElementsAre(1, 2));
    EXPECT_THAT(vector_of(grid.kdim), ElementsAre(1, 1));
    EXPECT_THAT(vector_of(grid.xyz), ElementsAre(1, -1, 0, 2, -2, 0, 3, -3, 0, 4, -4, 0));
    EXPECT_THAT(vector_of(grid.iblank), ElementsAre(1, 0, -2, 1));
    EXPECT_EQ(count_calls("dispfilereaderror"), 0);
  }
};

TEST_F(PlanarGrids, HaveNeitherKNorZInTheFile) {
  for (const int iformat : {0, 2}) {
    for (const bool dblprec : {false, true}) {
      const Bytes bytes = dblprec ? double_precision(iformat == 0) : single_precision(iformat == 0);
      const GridForm form{iformat, dblprec, true, true};
      write_file("grid", bytes);
      expect_read(form);
      grid.write("out", form);
      EXPECT_EQ(read_file("out"), bytes.str()) << iformat << dblprec;
    }
  }
  write_file("grid", std::string("2\n2 1 1 2\n1 2 -1 -2 1 0\n3 4 2*-3\n-2 1\n"));
  const GridForm text{1, false, true, true};
  grid = {};
  grid.read("grid", text);
  EXPECT_EQ(grid.xyz(2, 4), -3);
  write_file("grid", std::string("2\n2 1 1 2\n1 2 -1 -2 1 0\n3 4 -3 -4\n-2 1\n"));
  expect_read(text);
  grid.write("grid", text);
  expect_read(text);
}

TEST_F(PlanarGrids, AreCountedByTheirHeaders) {
  write_file("grid", single_precision(true));
  integer nblocks = 0;
  integer ndim = 0;
  integer npoints = 0;
  readp3dgridheader("grid", 0, nblocks, ndim, true, npoints);
  EXPECT_EQ(nblocks, 2);
  EXPECT_EQ(npoints, 4);
}

TEST_F(PlanarGrids, KeepWhatATruncatedFileHolds) {
  const std::string whole = single_precision(true).str();
  write_file("grid", whole.substr(0, whole.size() - 12));
  grid.read("grid", {0, false, true, true});
  EXPECT_EQ(count_calls("dispfilereaderror"), 1);
  EXPECT_THAT(vector_of(grid.xyz), ElementsAre(1, -1, 0, 2, -2, 0, 3, -3, 0, 4, -4, 0));
}

TEST_F(PlanarGrids, HaveNoPlaceForFurtherPlanes) {
  write_file("grid", single_precision(true));
  grid.read("grid", {0, false, true, true});
  grid.kdim(2) = 2;
  grid.jdim(2) = 1;
  write_file("out", std::string("old"));
  try {
    grid.write("out", {0, false, true, true});
    FAIL() << "written";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 2);
    EXPECT_THAT(end.what(), HasSubstr("cannot write grid out: block 2 has a k extent of 2"));
  }
  EXPECT_EQ(read_file("out"), "old");
}

}  // namespace
}  // namespace mod_p3dgrid
