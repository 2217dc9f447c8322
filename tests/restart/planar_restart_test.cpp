#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

using Sections = std::vector<std::pair<int, int>>;

/// Solutions and functions of two dimensions: blocks of 2 x 1 and 1 x 1 points.
class PlanarRestarts : public InScratchFolder {
 protected:
  std::vector<integer> idim{2, 1}, jdim{1, 1}, kdim{1, 1}, blockpoints{2, 1};
  allocatable<float, 2> varvalues, auxvalues;

  void SetUp() override {
    p3dsetcoding([](std::string_view name) {
      p3dgrid::StatedCoding coding;
      if (name.find(".tmp") == name.npos) coding.dimensions = p3dgrid::Dimensions::two;
      return coding;
    });
  }

  /// Parameters, then density, two momenta, energy and one more variable, in these records.
  static Bytes solution(const Sections& sections) {
    Bytes file = Bytes().record(Bytes().i4(2)).record(Bytes().i4s({2, 1, 1, 1}));
    for (const std::vector<float>& points : {std::vector{.1F, .2F}, std::vector{.3F}}) {
      file.record(Bytes().r4s({1, 2, 3, 4}));
      for (const auto& [first, last] : sections) {
        Bytes record;
        for (int v = first; v <= last; ++v) {
          for (const float point : points) {
            if (v != 4) record.r4(static_cast<float>(v) + point);
          }
        }
        file.record(record);
      }
    }
    return file;
  }
  static std::vector<float> expected(int variables) {
    std::vector<float> all;
    for (const float point : {.1F, .2F, .3F}) {
      for (int v = 1; v <= variables; ++v) {
        all.push_back(v == 4 ? 0 : static_cast<float>(v) + point);
      }
    }
    return all;
  }

  void read(int layout = 2) {
    varvalues.deallocate();
    auxvalues.deallocate();
    sqvar.deallocate();
    readp3drestart("flow", 0, false, 2, blockpoints, varvalues, auxvalues, idim, jdim, kdim, layout,
                   true);
  }
  void write(int layout = 2) {
    writep3drestart("out", 0, false, 2, 2, varvalues, {}, idim, jdim, kdim, layout, true);
    p3dcloseunit(301);
  }
  template <class Work>
  static void expect_refused(Work work, const char* words) {
    try {
      work();
      FAIL() << "not refused";
    } catch (const RunEnded& end) {
      EXPECT_EQ(end.status, 2);
      EXPECT_THAT(end.what(), HasSubstr(words));
    }
  }
};

TEST_F(PlanarRestarts, HaveNoThirdMomentumInTheFile) {
  for (const Sections& sections :
       {Sections{{1, 5}}, {{1, 5}, {6, 7}}, {{1, 3}, {4, 5}}, {{1, 4}}}) {
    const std::string bytes = solution(sections).str();
    write_file("flow", bytes);
    const int last = sections.back().second;
    set_sections(sections);
    mod_gridvars::numrstrtvar.fill(0);
    mod_gridvars::numrstrtvar(2) = std::max(0, last - 5);
    read();
    EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
    if (last >= 5) {
      EXPECT_EQ(vector_of(varvalues), expected(last));
    }
    varvalues(4, 1) = 99;  // has no place
    write();
    EXPECT_EQ(read_file("out"), bytes);
  }
}

TEST_F(PlanarRestarts, HeaderHasPlanesOfOne) {
  write_file("flow", solution({{1, 5}}));
  integer nblocks = 0;
  allocatable<integer, 1> i, j, k;
  readrestartheader("flow", 0, false, nblocks, 2, true, i, j, k);
  EXPECT_THAT(vector_of(i), ElementsAre(2, 1));
  EXPECT_THAT(vector_of(j), ElementsAre(1, 1));
  EXPECT_THAT(vector_of(k), ElementsAre(1, 1));
  p3dcloseunit(201);
}

TEST_F(PlanarRestarts, OneVariableAtATime) {
  const std::string bytes = solution({{1, 5}}).str();
  write_file("flow", bytes);
  set_sections({{1, 5}});
  mod_gridvars::numrstrtvar(1) = 5;
  for (integer v = 1; v <= 5; ++v) {
    std::vector<float> values(3, -77);
    readnextp3dvar(v, "flow", 0, false, 2, blockpoints, array_view<float, 2>(values.data(), 1, 3),
                   idim, jdim, kdim, 2, true);
    for (std::size_t p = 0; p < 3; ++p) {
      EXPECT_EQ(values[p], expected(5)[5 * p + static_cast<std::size_t>(v) - 1]) << v;
    }
    writenextp3dvar(v, "v", false, 2, blockpoints, array_view<const float, 2>(values.data(), 1, 3),
                    idim, jdim, kdim);
  }
  combinep3dvarfiles({}, "out", 0, false, 2, 2, idim, jdim, kdim, 2, true);
  EXPECT_EQ(read_file("out"), bytes);
}

TEST_F(PlanarRestarts, FunctionsKeepAllVariables) {
  const Bytes file = Bytes()
                         .record(Bytes().i4(2))
                         .record(Bytes().i4s({2, 1, 4, 1, 1, 4}))
                         .record(Bytes().r4s({1, 2, 3, 4, 5, 6, 7, 8}))
                         .record(Bytes().r4s({9, 10, 11, 12}));
  write_file("flow", file);
  set_sections({{1, 4}});
  read(3);
  EXPECT_THAT(vector_of(varvalues), ElementsAre(1, 3, 5, 7, 2, 4, 6, 8, 9, 10, 11, 12));
  write(3);
  EXPECT_EQ(read_file("out"), file.str());
}

TEST_F(PlanarRestarts, BelongToGridsOfEitherKind) {
  write_file("flow", solution({{1, 5}}));
  write_file("grid", Bytes().record(Bytes().i4(2)).record(Bytes().i4s({2, 1, 1, 1})));
  write_file("plane.tmp", Bytes().record(Bytes().i4(2)).record(Bytes().i4s({2, 1, 1, 1, 1, 1})));
  for (const char* grid : {"grid", "plane.tmp"}) {
    checkp3drstrtheader(grid, 0, "flow", 0, false, 2, true);
    EXPECT_EQ(count_calls("dispfilereaderror"), 0) << grid;
    EXPECT_TRUE(messages.empty());
  }
}

TEST_F(PlanarRestarts, HaveNoPlaceForFurtherPlanes) {
  write_file("flow", solution({{1, 5}}));
  set_sections({{1, 5}});
  read();
  kdim[0] = 2;
  idim[0] = 1;
  write_file("out", std::string("old"));
  expect_refused([&] { write(); }, "restart file out: block 1 has a k extent of 2");
  EXPECT_EQ(read_file("out"), "old");
}

TEST_F(PlanarRestarts, OtherLayoutsHaveNone) {
  write_file("flow", solution({{1, 5}}));
  write_file("out", std::string("old"));
  set_sections({{1, 5}});
  integer nblocks = 0;
  for (const int layout : {0, 1, 100, 101, 102}) {
    const char* words = "layouts other than 2 and 3 have no files of two dimensions";
    expect_refused([&] { read(layout); }, words);
    expect_refused([&] { readrestartheader("flow", 0, false, nblocks, layout, true); }, words);
    expect_refused([&] { writerestartheader("out", 0, false, 2, idim, jdim, kdim, layout, true); },
                   words);
  }
  EXPECT_EQ(read_file("out"), "old");
}

}  // namespace
}  // namespace mod_p3dgrid
