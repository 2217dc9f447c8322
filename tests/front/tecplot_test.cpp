#include "p3dgrid/tecplot.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "MOD_P3DReader.hpp"
#include "front/front_case.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::HasSubstr;

class Tecplot : public InScratchFolder {
 protected:
  Block first{.extents = {2, 1, 1},
              .x = Reals(Array<float>{0.125f, 1}),
              .y = Reals(Array<double>{0.2, 2}),
              .z = Reals(Array<float>{0.1f, 3}),
              .iblank = {1, -2}};
  Block empty{.extents = {1, 0, 3}, .x = {}, .y = {}, .z = {}, .iblank = {}};
  std::vector<Reals> flow{Reals(Array<double>{1.0 / 3, 1e-20}), Reals(Array<float>{0.5f, -7})};

  void write(bool iblank) {
    TecplotWriter writer("tec", {"rho", "mean e"}, iblank);
    writer.write(first, flow);
    writer.write(empty, {Reals(), Reals()});
    writer.close();
  }
};

TEST_F(Tecplot, NamesZonesAndPoints) {
  write(false);
  EXPECT_EQ(read_file("tec"),
            " VARIABLES = \"X\", \"Y\", \"Z\", \"rho\", \"mean e\"\n"
            "ZONE T=\"ZONE-000001\" I=0002 J=0001 K=0001\n"
            " 0.125 0.2 0.10000000149011612 0.3333333333333333 0.5\n"
            " 1 2 3 1e-20 -7\n"
            "ZONE T=\"ZONE-000002\" I=0001 J=0000 K=0003\n");
}

TEST_F(Tecplot, BlankingIsTheLastColumnAndOneWhereItIsMissing) {
  write(true);
  const std::string text = read_file("tec");
  EXPECT_THAT(text,
              HasSubstr(" VARIABLES = \"X\", \"Y\", \"Z\", \"rho\", \"mean e\",\"IBLANK\"\n"));
  EXPECT_THAT(text, HasSubstr(" 0.5 1\n 1 2 3 1e-20 -7 -2\n"));
  first.iblank.clear();
  write(true);
  EXPECT_THAT(read_file("tec"), HasSubstr(" 0.5 1\n 1 2 3 1e-20 -7 1\n"));
}

TEST_F(Tecplot, EveryPointOfALargeBlockHasItsLine) {
  Array<double> x;
  std::string lines;
  for (int p = 0; p < 1000; ++p) {
    x.push_back(p);
    const std::string n = std::to_string(p);
    lines += " " + n + " " + n + " " + n + " " + std::to_string(-p) + "\n";
  }
  first = {.extents = {10, 10, 10}, .x = Reals(x), .y = Reals(x), .z = Reals(x), .iblank = {}};
  for (int p = 0; p < 1000; ++p) first.iblank.push_back(-p);
  TecplotWriter writer("tec", {}, true);
  writer.write(first, {});
  writer.close();
  const std::string text = read_file("tec");
  EXPECT_EQ(text.substr(text.find("\n 0 0") + 1), lines);
}

TEST_F(Tecplot, NanIsOneWordInEitherPrecision) {
  first.x = Reals(Array<float>{-std::numeric_limits<float>::quiet_NaN(), 1});
  flow[0] = Reals(Array<double>{-std::numeric_limits<double>::quiet_NaN(), 1});
  write(false);
  EXPECT_THAT(read_file("tec"), HasSubstr("\n NaN 0.2 0.10000000149011612 NaN 0.5\n"));
}

TEST_F(Tecplot, TheModuleWritesTheSameBytes) {
  Block block{.extents = {2, 1, 1},
              .x = Reals(Array<double>{1, 2}),
              .y = Reals(Array<double>{3, 4}),
              .z = Reals(Array<double>{5, 6}),
              .iblank = {7, 8}};
  const std::vector<Reals> five(5, Reals(Array<double>{0.1, -1e300}));
  TecplotWriter writer("front",
                       {TecplotWriter::flow_names.begin(), TecplotWriter::flow_names.end()}, true);
  writer.write(block, five);
  writer.close();
  const std::vector<double> xyz{1, 3, 5, 2, 4, 6};
  std::vector<double> qvar(5, 0.1);
  qvar.resize(10, -1e300);
  const std::vector<std::int32_t> i{2}, one{1};
  using mod_p3dgrid::array_view;
  mod_p3dgrid::writetecplotfile_p3d("module", 1, array_view<const double, 2>(xyz.data(), 3, 2),
                                    array_view<const double, 2>(qvar.data(), 5, 2), i, one, one,
                                    std::vector<std::int32_t>{7, 8}, true);
  mod_p3dgrid::p3dcloseunit(594);
  EXPECT_EQ(read_file("front"), read_file("module"));
}

TEST_F(Tecplot, ArgumentsThatDoNotFitAreRefused) {
  const auto expect_refused = [&](const std::string& reason) {
    const Error error = error_of([&] { write(false); });
    EXPECT_EQ(error.kind(), ErrorKind::argument);
    EXPECT_THAT(error.what(), HasSubstr(reason));
  };
  flow.pop_back();
  expect_refused("found 1 variables, expected 2");
  flow.push_back(Reals(Array<float>{1}));
  expect_refused("found 1 values of a variable, expected 2");
  flow.back() = Reals(Array<float>{1, 2});
  first.y = Reals();
  expect_refused("found block 0 of 0 values of a coordinate, expected 2");
  first.y = first.x;
  first.iblank.pop_back();
  expect_refused("found block 0 of 1 blanking values, expected 2");
  first = {.extents = {10'000, 0, 1}, .x = {}, .y = {}, .z = {}, .iblank = {}};
  expect_refused("found an extent of 10000, expected extents up to 9999");
  first.extents = {0, -1, 1};
  expect_refused("found an extent of -1, expected extents up to 9999");
}

TEST_F(Tecplot, NamesThatEndTheirQuotationMarksOrLineAreRefused) {
  write_file("tec", "before");
  for (const char* name : {"a\"b", "a\nb", "\x1b"}) {
    const Error error = error_of([&] { TecplotWriter("tec", {"fine", name}); });
    EXPECT_EQ(error.kind(), ErrorKind::argument);
    EXPECT_EQ(read_file("tec"), "before");
  }
}

TEST_F(Tecplot, AFullDiskIsASystemError) {
  TecplotWriter writer("/dev/full", {});
  EXPECT_EQ(error_of([&] { writer.close(); }).kind(), ErrorKind::system);
}

}  // namespace
}  // namespace p3dgrid
