#include "p3dgrid/grid.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include "front/front_case.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FrontGrid : public InScratchFolder {};

/// Two blocks of 2x1x1 and 1x2x1 points in double precision with blanking.
Bytes two_blocks() {
  return Bytes()
      .record(Bytes().i4(2))
      .record(Bytes().i4s({2, 1, 1, 1, 2, 1}))
      .record(Bytes().r8s({0.1, 0.2, 1, 2, -3, 1e300}).i4s({1, 0}))
      .record(Bytes().r8s({5, 6, 7, 8, 9, 10}).i4s({3, -2}));
}

constexpr GridForm double_form = {.coding = {.precision = Precision::double_precision},
                                  .iblank = true};

TEST_F(FrontGrid, IsReadInThePrecisionOfItsFile) {
  write_file("grid", two_blocks());
  const Grid grid = read_grid("grid");
  EXPECT_EQ(grid.form, double_form);
  ASSERT_EQ(grid.blocks.size(), 2U);
  const Block& first = grid.blocks[0];
  EXPECT_EQ(first.extents, (BlockExtents{2, 1, 1}));
  EXPECT_EQ(first.x.precision(), Precision::double_precision);
  EXPECT_THAT(list_of(first.x), ElementsAre(0.1, 0.2));
  EXPECT_THAT(list_of(first.y), ElementsAre(1, 2));
  EXPECT_THAT(list_of(first.z), ElementsAre(-3, 1e300));
  EXPECT_THAT(first.iblank, ElementsAre(1, 0));
  EXPECT_THAT(grid.blocks[1].iblank, ElementsAre(3, -2));
  EXPECT_EQ(grid.extents(), (Extents{{2, 1}, {1, 2}, {1, 1}}));
}

TEST_F(FrontGrid, IsWrittenAsItWasRead) {
  write_file("grid", two_blocks());
  write_grid("copy", read_grid("grid"));
  EXPECT_EQ(read_file("copy"), two_blocks().str());
}

TEST_F(FrontGrid, IsWrittenInTheFormThatIsStated) {
  write_file("grid", two_blocks());
  const Grid grid = read_grid("grid");
  write_grid("copy", grid, {.encoding = Encoding::binary});
  EXPECT_EQ(read_file("copy"), Bytes()
                                   .i4s({2, 2, 1, 1, 1, 2, 1})
                                   .r8s({0.1, 0.2, 1, 2, -3, 1e300})
                                   .i4s({1, 0})
                                   .r8s({5, 6, 7, 8, 9, 10})
                                   .i4s({3, -2})
                                   .str());
  write_grid("copy", grid,
             {.coding = {.encoding = Encoding::binary, .precision = Precision::single_precision},
              .iblank = false});
  EXPECT_EQ(read_file("copy"), Bytes()
                                   .i4s({2, 2, 1, 1, 1, 2, 1})
                                   .r4s({0.1F, 0.2F, 1, 2, -3, HUGE_VALF})
                                   .r4s({5, 6, 7, 8, 9, 10})
                                   .str());
}

TEST_F(FrontGrid, GetsBlankingOfOnesWhereItHasNone) {
  const Bytes plain = Bytes().i4s({1, 1, 2, 1}).r4s({1, 2, 3, 4, 5, 6});
  write_file("grid", plain);
  write_grid("copy", read_grid("grid"), {.iblank = true});
  EXPECT_EQ(read_file("copy"), Bytes(plain).i4s({1, 1}).str());
}

TEST_F(FrontGrid, OfTextIsReadInDoublePrecisionAndKeepsItsDigits) {
  const std::string text = " 1\n 2 1 1\n 0.1 1e-17 3.141592653589793 4 5 6\n";
  write_file("grid", text);
  const Grid grid = read_grid("grid");
  EXPECT_THAT(list_of(grid.blocks[0].x), ElementsAre(0.1, 1e-17));
  write_grid("copy", grid);
  EXPECT_EQ(read_file("copy"), text);
}

TEST_F(FrontGrid, KeepsEveryBitOfDoublesByWayOfText) {
  std::mt19937_64 bits(7);
  Grid grid{.form = double_form, .blocks = {Block{.extents = {50, 20, 10}}}};
  Block& block = grid.blocks.front();
  for (Reals* coordinate : {&block.x, &block.y, &block.z}) {
    Array<double> values(10'000);
    for (double& value : values) {
      do value = std::bit_cast<double>(bits());
      while (!std::isfinite(value));
    }
    *coordinate = Reals(std::move(values));
  }
  write_grid("grid.txt", grid, {.encoding = Encoding::formatted});
  const Grid text = read_grid("grid.txt");
  EXPECT_EQ(text.blocks[0].x, block.x);
  EXPECT_EQ(text.blocks[0].y, block.y);
  EXPECT_EQ(text.blocks[0].z, block.z);
}

TEST_F(FrontGrid, IsReadBlockByBlockInAnyOrder) {
  for (const Encoding encoding : {Encoding::unformatted, Encoding::formatted, Encoding::binary}) {
    write_file("two", two_blocks());
    write_grid("grid", read_grid("two"), {.encoding = encoding});
    GridReader reader("grid");
    EXPECT_EQ(reader.extents().blocks(), 2);
    EXPECT_THAT(list_of(reader.read(1).z), ElementsAre(9, 10)) << name_of(encoding);
    EXPECT_THAT(list_of(reader.read(0).x), ElementsAre(0.1, 0.2)) << name_of(encoding);
    EXPECT_THAT(reader.read(1).iblank, ElementsAre(3, -2)) << name_of(encoding);
  }
}

TEST_F(FrontGrid, IsReadInARangeOfIndices) {
  for (const Encoding encoding : {Encoding::unformatted, Encoding::formatted, Encoding::binary}) {
    Array<float> x(60), y(60), z(60);
    Array<std::int32_t> iblank(60);
    for (int p = 0; p < 60; ++p) {
      const auto at = static_cast<std::size_t>(p);
      x[at] = static_cast<float>(p);
      y[at] = static_cast<float>(100 + p);
      z[at] = static_cast<float>(200 + p);
      iblank[at] = p;
    }
    Grid grid{.blocks = {Block{{5, 4, 3}, Reals(x), Reals(y), Reals(z), iblank}}};
    write_grid("grid", grid, {.encoding = encoding});
    GridReader reader("grid");
    const Block part = reader.read(0, {.first = {1, 2, 0}, .last = {2, 3, 1}});
    EXPECT_EQ(part.extents, (BlockExtents{2, 2, 2}));
    EXPECT_THAT(list_of(part.x), ElementsAre(11, 12, 16, 17, 31, 32, 36, 37));
    EXPECT_THAT(list_of(part.z), ElementsAre(211, 212, 216, 217, 231, 232, 236, 237));
    EXPECT_THAT(part.iblank, ElementsAre(11, 12, 16, 17, 31, 32, 36, 37));
    const Block plane = reader.read(0, {.first = {0, 0, 2}});
    EXPECT_EQ(plane.extents, (BlockExtents{5, 4, 1}));
    EXPECT_EQ(plane.y[0], 140);
    EXPECT_EQ(reader.read(0, {.first = {5, 0, 0}}).x.size(), 0);
  }
}

TEST_F(FrontGrid, IsReadToMemoryOfTheCaller) {
  write_file("grid", two_blocks());
  GridReader reader("grid");
  std::array<double, 6> points{};
  std::array<std::int32_t, 2> blanking{};
  const auto allocate = [&](Precision precision, const BlockExtents& extents) {
    EXPECT_EQ(precision, Precision::double_precision);
    EXPECT_EQ(extents, (BlockExtents{1, 2, 1}));
    return BlockMemory{{&points[4], &points[2], &points[0]}, blanking.data()};
  };
  reader.read(1, allocate);
  EXPECT_THAT(points, ElementsAre(9, 10, 7, 8, 5, 6));
  EXPECT_THAT(blanking, ElementsAre(3, -2));
  EXPECT_TRUE(reader.reading().fit.whole());
  reader.require_agreement();
}

TEST_F(FrontGrid, ReadersComparePartsUnlessAskedForTheWhole) {
  write_file("grid", two_blocks());
  const StatedGridForm without_blanking =
      stated_as(GridForm{.coding = {.precision = Precision::double_precision}, .iblank = false});
  GridReader reader("grid", without_blanking);
  EXPECT_THAT(list_of(reader.read(1).x), ElementsAre(5, 6));
  const Error error = error_of([&] { reader.require_agreement(); });
  EXPECT_EQ(error.kind(), ErrorKind::mismatch);
  EXPECT_THAT(error.what(), HasSubstr("grid: is not grid, unformatted"));
}

TEST_F(FrontGrid, HasNoPointsInARangeOutsideOfIt) {
  write_file("grid", two_blocks());
  GridReader reader("grid");
  constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(reader.read(0, {.first = {1, 0, 0}, .last = {0, 0, 0}}).x.size(), 0);
  EXPECT_EQ(reader.read(0, {.first = {most - 1, 0, 0}}).x.size(), 0);
  EXPECT_THAT(list_of(reader.read(0, {.first = {most, 0, 0}}).x), ElementsAre(0.2));
  EXPECT_EQ(reader.read(0, {.first = {1, 0, 0}, .last = {least, 0, 0}}).extents.i, 0);
  EXPECT_EQ(reader.read(0, {.first = {least, least, least}}).x.size(), 2);
  EXPECT_THAT(list_of(reader.read(1).z), ElementsAre(9, 10));
}

TEST_F(FrontGrid, IsReadFromItsBeginningAfterAnError) {
  write_file("grid", "2\n1 1 1 1 1 1\n1 word 3\n4 5 6 7 8 9\n10 11 12\n");
  GridReader reader("grid", stated_as(GridForm{.coding = {.encoding = Encoding::formatted}}));
  for (const std::int32_t block : {0, 1, 1, 0}) {
    const Error error = error_of([&] { static_cast<void>(reader.read(block)); });
    EXPECT_EQ(error.details().line, 3) << block;
  }
}

TEST_F(FrontGrid, FailuresHaveAKindAndAPlace) {
  const Error missing = error_of([] { static_cast<void>(read_grid("missing")); });
  EXPECT_EQ(missing.kind(), ErrorKind::system);
  EXPECT_STREQ(missing.what(), "missing: No such file or directory");

  write_file("short", two_blocks().str().substr(0, 100));
  EXPECT_EQ(error_of([] { static_cast<void>(read_grid("short")); }).kind(), ErrorKind::damaged);
  const Error stated =
      error_of([] { static_cast<void>(read_grid("short", stated_as(double_form))); });
  EXPECT_EQ(stated.kind(), ErrorKind::damaged);
  EXPECT_EQ(stated.details().record, 3);
  EXPECT_THAT(stated.what(), HasSubstr("short: record 3, byte 100: found the end of the file"));

  write_file("empty", "");
  EXPECT_STREQ(error_of([] { static_cast<void>(read_grid("empty")); }).what(), "empty: is empty");
  write_file("words", "no numbers at all, and no others");
  EXPECT_EQ(error_of([] { static_cast<void>(read_grid("words")); }).kind(), ErrorKind::unknown);
}

TEST_F(FrontGrid, ASolutionInItsPlaceIsOfTheWrongKind) {
  write_file("flow", Bytes()
                         .record(Bytes().i4(1))
                         .record(Bytes().i4s({2, 1, 1}))
                         .record(Bytes().r4s({0, 0, 0, 0}))
                         .record(Bytes().r4s({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})));
  const Error error = error_of([] { static_cast<void>(read_grid("flow")); });
  EXPECT_EQ(error.kind(), ErrorKind::wrong_kind);
  EXPECT_THAT(error.what(), HasSubstr("is a restart (flow-solution) file, not a grid: layout 2"));
}

TEST_F(FrontGrid, SeveralFormsAreThrownWithTheReadings) {
  // A block of one point with or without a count, in the precision that fits.
  write_file("grid", Bytes().i4s({1, 1, 1, 1}).r8s({0, 0, 0}));
  const Error error = error_of([] { static_cast<void>(read_grid("grid")); });
  EXPECT_EQ(error.kind(), ErrorKind::ambiguous);
  EXPECT_THAT(error.what(), HasSubstr("grid: matches several forms: grid, binary"));
  const auto& readings = error.details().readings;
  ASSERT_GE(readings.size(), 2U);
  const GridForm& form = readings.front().grid();
  EXPECT_EQ(read_grid("grid", stated_as(form)).form, form);
  EXPECT_EQ(GridReader("grid", readings.front()).form(), form);
}

TEST_F(FrontGrid, AFormThatIsNotTheFilesIsAMismatch) {
  write_file("grid", two_blocks());
  GridForm form = double_form;
  form.iblank = false;
  const Error error = error_of([&] { static_cast<void>(read_grid("grid", stated_as(form))); });
  EXPECT_EQ(error.kind(), ErrorKind::mismatch);
}

TEST_F(FrontGrid, InvalidArgumentsLeaveTheFileUnchanged) {
  write_file("file", "as it is");
  const Grid no_blocks;
  EXPECT_EQ(error_of([&] { write_grid("file", no_blocks); }).kind(), ErrorKind::argument);
  Grid grid{
      .blocks = {Block{
          {2, 1, 1}, Reals(Array<float>(2)), Reals(Array<float>(2)), Reals(Array<float>(1)), {}}}};
  EXPECT_EQ(error_of([&] { write_grid("file", grid); }).kind(), ErrorKind::argument);
  grid.blocks.front().z = grid.blocks.front().x;
  grid.blocks.front().iblank.assign(3, 1);
  EXPECT_EQ(error_of([&] { write_grid("file", grid); }).kind(), ErrorKind::argument);
  grid.blocks.front().iblank.clear();
  grid.blocks.push_back(grid.blocks.front());
  EXPECT_EQ(error_of([&] { write_grid("file", grid, {.multiblock = false}); }).kind(),
            ErrorKind::argument);
  grid.blocks.front().extents = {-1, -2, 1};
  EXPECT_EQ(error_of([&] { write_grid("file", grid); }).kind(), ErrorKind::argument);
  EXPECT_EQ(read_file("file"), "as it is");
}

TEST_F(FrontGrid, BlocksAreWrittenAsAnnounced) {
  write_file("two", two_blocks());
  const Grid grid = read_grid("two");
  GridWriter writer("grid", double_form, grid.extents());
  EXPECT_EQ(error_of([&] { writer.write(grid.blocks[1]); }).kind(), ErrorKind::argument);
  writer.write(grid.blocks[0]);
  EXPECT_EQ(error_of([&] { writer.close(); }).kind(), ErrorKind::argument);
  writer.write(grid.blocks[1]);
  EXPECT_EQ(error_of([&] { writer.write(grid.blocks[1]); }).kind(), ErrorKind::argument);
  writer.close();
  EXPECT_EQ(read_file("grid"), two_blocks().str());
}

TEST_F(FrontGrid, APipeIsReadForwardOnly) {
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  std::thread writer([] { write_file("pipe", two_blocks()); });
  GridReader reader("pipe", stated_as(double_form));
  EXPECT_THAT(list_of(reader.read(0).x), ElementsAre(0.1, 0.2));
  EXPECT_THAT(list_of(reader.read(1).x), ElementsAre(5, 6));
  EXPECT_EQ(error_of([&] { static_cast<void>(reader.read(0)); }).kind(), ErrorKind::system);
  writer.join();
}

TEST_F(FrontGrid, HeadersThatNoFileCanHoldTakeNoMemory) {
  const StatedGridForm form = stated_as(GridForm{.coding = {.encoding = Encoding::binary}});
  for (const Bytes& header : {Bytes().i4(2'000'000'000), Bytes().i4s({1, 60'000, 60'000, 10}),
                              Bytes().i4s({1, 2'000'000'000, 2'000'000'000, 2'000'000'000}),
                              Bytes().i4s({1, -1, 2, 3}), Bytes().i4(0), Bytes().i4(-5)}) {
    write_file("grid", header);
    EXPECT_EQ(error_of([&] { static_cast<void>(read_grid("grid", form)); }).kind(),
              ErrorKind::damaged);
  }
}

}  // namespace
}  // namespace p3dgrid
