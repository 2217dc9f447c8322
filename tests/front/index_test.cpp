#include "p3dgrid/index.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "front/front_case.hpp"
#include "p3dgrid/solution.hpp"
#include "recordio/unformatted_record.hpp"
#include "restart/restart_case.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FrontIndex : public InScratchFolder {};

/// The bytes of ranges, by `pread`.
std::string bytes_in(const std::string& path, const std::vector<ByteRange>& ranges) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  std::string bytes;
  for (const ByteRange& range : ranges) {
    std::string part(static_cast<std::size_t>(range.bytes), '\0');
    EXPECT_EQ(::pread(descriptor, part.data(), part.size(), range.offset), range.bytes);
    bytes += part;
  }
  ::close(descriptor);
  return bytes;
}

template <class Value>
std::vector<double> decoded(std::string bytes, ByteOrder order) {
  std::vector<double> values;
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(Value)) {
    if (order != ByteOrder::native) {
      std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(at + sizeof(Value)));
    }
    Value value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    values.push_back(static_cast<double>(value));
  }
  return values;
}

std::vector<double> values_at(const std::string& path, const StoredArray& array,
                              const std::vector<ByteRange>& ranges, ByteOrder order) {
  const std::string bytes = bytes_in(path, ranges);
  switch (array.kind) {
    case ValueKind::integer4:
      return decoded<std::int32_t>(bytes, order);
    case ValueKind::real4:
      return decoded<float>(bytes, order);
    case ValueKind::real8:
      return decoded<double>(bytes, order);
  }
  return {};
}

std::vector<double> values_of(const Block& block, const StoredArray& array) {
  if (array.content == Content::iblank) return {block.iblank.begin(), block.iblank.end()};
  EXPECT_EQ(array.content, Content::coordinate);
  const Reals* const coordinates[] = {&block.x, &block.y, &block.z};
  return list_of(*coordinates[array.number - 1]);
}

std::vector<double> values_of(const SolutionBlock& block, const StoredArray& array) {
  if (array.content == Content::parameters) {
    const auto first = block.parameters.begin() + array.number - 1;
    return {first, first + array.count};
  }
  return list_of(block.of({array.number, array.content == Content::triplets}));
}

/// Compares the bytes in all ranges with the values of the blocks.
template <class Blocks>
void expect_values(const std::string& path, const Index& index, const Blocks& blocks) {
  ASSERT_EQ(index.blocks.size(), blocks.size());
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    EXPECT_EQ(index.extents.of(b), blocks[b].extents);
    for (const StoredArray& array : index.blocks[b]) {
      const std::vector<double> values = values_of(blocks[b], array);
      EXPECT_EQ(std::ssize(values), array.count);
      EXPECT_EQ(values_at(path, array, array.ranges, index.byte_order), values);
      if (array.count < 2) continue;
      EXPECT_EQ(values_at(path, array, array.of(1, array.count), index.byte_order),
                std::vector<double>(values.begin() + 1, values.end()));
    }
  }
}

TEST_F(FrontIndex, OfAGridNamesTheFirstByteOfEachArray) {
  write_file(
      "grid",
      Bytes().record(Bytes().i4s({2, 1, 1})).record(Bytes().r8s({1, 2, 3, 4, 5, 6}).i4s({1, 0})));
  const Index index = index_grid("grid");
  EXPECT_EQ(index.byte_order, ByteOrder::native);
  EXPECT_EQ(index.extents, (Extents{{2}, {1}, {1}}));
  ASSERT_THAT(index.blocks, SizeIs(1));
  EXPECT_THAT(index.blocks[0],
              ElementsAre(StoredArray{Content::coordinate, 1, ValueKind::real8, 2, {{24, 16}}},
                          StoredArray{Content::coordinate, 2, ValueKind::real8, 2, {{40, 16}}},
                          StoredArray{Content::coordinate, 3, ValueKind::real8, 2, {{56, 16}}},
                          StoredArray{Content::iblank, 1, ValueKind::integer4, 2, {{72, 8}}}));
}

TEST_F(FrontIndex, OfTwoDimensionsHasNoThirdCoordinate) {
  write_file("grid", Bytes().i4s({1, 2, 1}).r4s({1, 2, 3, 4}));
  const Index index = index_grid("grid");
  EXPECT_THAT(index.blocks[0],
              ElementsAre(StoredArray{Content::coordinate, 1, ValueKind::real4, 2, {{12, 8}}},
                          StoredArray{Content::coordinate, 2, ValueKind::real4, 2, {{20, 8}}}));
}

TEST_F(FrontIndex, NamesTheRangesBetweenTheMarkersOfSubrecords) {
  // A record of 36 bytes in sub-records of 10 and 26 bytes, the first of which ends within a value.
  const std::string values = Bytes().r4s({1, 2, 3, 4, 5, 6}).i4s({7, 8, 9}).str();
  std::string file = Bytes().record(Bytes().i4s({1, 1, 3})).str();
  file += Bytes().i4(-10).str() + values.substr(0, 10) + Bytes().i4(10).str();
  file += Bytes().i4(26).str() + values.substr(10) + Bytes().i4(-26).str();
  write_file("grid", file);
  const Index index = index_grid(
      "grid",
      {.coding = {.precision = Precision::single_precision}, .multiblock = false, .iblank = false});
  EXPECT_THAT(index.blocks[0][0].ranges, ElementsAre(ByteRange{24, 10}, ByteRange{42, 2}));
  EXPECT_THAT(index.blocks[0][1].ranges, ElementsAre(ByteRange{44, 12}));
  EXPECT_THAT(index.blocks[0][0].of(1, 3), ElementsAre(ByteRange{28, 6}, ByteRange{42, 2}));
  EXPECT_THAT(index.blocks[0][0].of(1, 2), ElementsAre(ByteRange{28, 4}));
  EXPECT_THAT(index.blocks[0][0].of(2, 2), IsEmpty());
}

TEST_F(FrontIndex, OfASolutionNamesParametersAndVariables) {
  write_file("flow",
             Bytes().i4s({1, 1, 1, 1}).r4s({.1F, .2F, .3F, .4F}).r4s({1, 2, 3, 4, 5}).str());
  const Index index = index_solution(
      "flow",
      {.form = {.coding = {.encoding = Encoding::binary, .precision = Precision::single_precision},
                .multiblock = true}});
  EXPECT_THAT(index.blocks[0],
              ElementsAre(StoredArray{Content::parameters, 1, ValueKind::real4, 4, {{16, 16}}},
                          StoredArray{Content::variable, 1, ValueKind::real4, 1, {{32, 4}}},
                          StoredArray{Content::variable, 2, ValueKind::real4, 1, {{36, 4}}},
                          StoredArray{Content::variable, 3, ValueKind::real4, 1, {{40, 4}}},
                          StoredArray{Content::variable, 4, ValueKind::real4, 1, {{44, 4}}},
                          StoredArray{Content::variable, 5, ValueKind::real4, 1, {{48, 4}}}));
}

TEST_F(FrontIndex, OfAnOverflowSolutionSetsTheIntegerParameterApart) {
  const Bytes parameters =
      Bytes().r8s({.1, .2, .3, .4, .5, .6, .7}).i4(3).r8s({.9, 1, 1.1, 1.2, 1.3, 1.4, 1.5, 1.6});
  write_file("flow", Bytes()
                         .record(Bytes().i4s({1, 1, 1, 6, 0}))
                         .record(parameters)
                         .record(Bytes().r8s({1, 2, 3, 4, 5, 6})));
  const Index index = index_solution("flow");
  expect_values("flow", index, read_solution("flow").blocks);
  ASSERT_THAT(index.blocks[0], SizeIs(9));
  EXPECT_EQ(index.blocks[0][1],
            (StoredArray{Content::parameters, 8, ValueKind::integer4, 1, {{88, 4}}}));
}

/// Calls `check(coding)` for all codings except text.
template <class Check>
void for_each_coding(Check check) {
  for (const Encoding encoding : {Encoding::unformatted, Encoding::binary}) {
    for (const Precision precision : {Precision::single_precision, Precision::double_precision}) {
      for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
        for (const MarkerBytes marker : {MarkerBytes::four, MarkerBytes::eight}) {
          if (encoding == Encoding::binary && marker == MarkerBytes::eight) continue;
          for (const Dimensions dimensions : {Dimensions::two, Dimensions::three}) {
            check(Coding{encoding, precision, order, marker, dimensions});
          }
        }
      }
    }
  }
}

Reals counted_from(double first, std::int64_t count) {
  Array<double> values;
  for (std::int64_t n = 0; n < count; ++n) values.push_back(first + static_cast<double>(n));
  return Reals(std::move(values));
}

Grid sample_grid(const Coding& coding, bool iblank) {
  Grid grid{.form = {.coding = coding, .iblank = iblank}};
  for (const BlockExtents& extents :
       {BlockExtents{4, 3, 1}, BlockExtents{0, 2, 1}, BlockExtents{5, 1, 1}}) {
    const std::int64_t points = extents.points();
    Block block{extents, counted_from(1, points), counted_from(100, points),
                Reals(Array<double>(static_cast<std::size_t>(points), 0.0))};
    for (std::int32_t p = 0; iblank && p < points; ++p) block.iblank.push_back(p - 2);
    grid.blocks.push_back(std::move(block));
  }
  return grid;
}

Solution sample_solution(const Coding& coding) {
  Solution solution{.form = {.layout = Layout::solution, .coding = coding, .sections = {{{1, 5}}}}};
  for (const Block& block : sample_grid(coding, false).blocks) {
    SolutionBlock flow{block.extents, {0.5, 0.25, 1, 2}};
    for (int v = 0; v < 5; ++v) {
      flow.variables.push_back(v == 3 ? block.z : counted_from(v * 8, block.extents.points()));
    }
    solution.blocks.push_back(std::move(flow));
  }
  return solution;
}

TEST_F(FrontIndex, FindsTheValuesOfGridsOfAllForms) {
  for (const std::int64_t limit :
       {std::int64_t{7}, mod_p3dgrid::recordio::default_subrecord_limit}) {
    mod_p3dgrid::recordio::set_subrecord_limit(limit);
    for_each_coding([](const Coding& coding) {
      for (const bool iblank : {false, true}) {
        SCOPED_TRACE(describe(coding));
        const Grid grid = sample_grid(coding, iblank);
        const StatedGridForm form = stated_as(GridForm{coding, true, iblank});
        write_grid("grid", grid, form);
        const Index index = index_grid("grid", form);
        EXPECT_THAT(index.blocks[0], SizeIs(axes_of(coding) + (iblank ? 1 : 0)));
        expect_values("grid", index, read_grid("grid", form).blocks);
        expect_values("grid", index, grid.blocks);
      }
    });
  }
}

TEST_F(FrontIndex, FindsTheValuesOfSolutionsOfAllCodings) {
  for (const std::int64_t limit :
       {std::int64_t{7}, mod_p3dgrid::recordio::default_subrecord_limit}) {
    mod_p3dgrid::recordio::set_subrecord_limit(limit);
    for_each_coding([](const Coding& coding) {
      SCOPED_TRACE(describe(coding));
      const Solution solution = sample_solution(coding);
      const StatedRestartForm form = stated_as(solution.form);
      write_solution("flow", solution, form);
      const Index index = index_solution("flow", {.form = form});
      EXPECT_THAT(index.blocks[0], SizeIs(is_planar(coding) ? 5 : 6));
      expect_values("flow", index, solution.blocks);
    });
  }
}

/// The extents of the hand-made solutions, as those of a grid.
Grid grid_of(const HandMadeRestart& file) {
  Grid grid;
  for (int b = 0; b < file.form.blocks; ++b) {
    grid.blocks.push_back({.extents = {HandMadeRestart::extent(b, 0), HandMadeRestart::extent(b, 1),
                                       HandMadeRestart::extent(b, 2)}});
  }
  return grid;
}

TEST_F(FrontIndex, FindsTheValuesOfSolutionsOfAllLayouts) {
  int files = 0;
  for (const test_support::RestartForm& form : all_restart_forms()) {
    if (form.iformat == 1) continue;
    SCOPED_TRACE(name_of(form));
    const HandMadeRestart file(form);
    write_file("flow", file.bytes());
    Sections sections;
    for (const auto& [first, last] : form.sections) sections.push_back({first, last});
    const Grid grid = grid_of(file);
    const SolutionOptions options = {
        .form = stated_as(
            RestartForm{Layout{form.layout},
                        {Encoding{form.iformat},
                         form.dblprec ? Precision::double_precision : Precision::single_precision},
                        form.multiblock,
                        sections}),
        .grid = &grid};
    const Solution solution = read_solution("flow", options);
    const Index index = index_solution("flow", options);
    expect_values("flow", index, solution.blocks);
    std::size_t arrays = 0;
    for (const StoredArray& array : index.blocks[0]) {
      arrays += array.content != Content::parameters;
    }
    EXPECT_EQ(arrays, solution.blocks[0].variables.size() + solution.blocks[0].triplets.size());
    ++files;
  }
  EXPECT_GT(files, 80);
}

TEST_F(FrontIndex, FindsVariablesBehindFlags) {
  write_file("flow", Bytes()
                         .record(Bytes().i4s({1, 1, 1, 7}).r8(0.25))
                         .record(Bytes().r8s({-1, -2, -3, 1, 2, 3, 4, 5}))
                         .record(Bytes().i4(41))
                         .record(Bytes().r8s({6, 7, 8}))
                         .record(Bytes().i4(999)));
  const SolutionOptions options = {.form = {.layout = Layout::single_block}};
  const Index index = index_solution("flow", options);
  EXPECT_THAT(index.blocks[0], SizeIs(11));
  expect_values("flow", index, read_solution("flow", options).blocks);
}

TEST_F(FrontIndex, LeavesAReaderUsable) {
  const Solution solution = sample_solution({.precision = Precision::double_precision});
  write_solution("flow", solution);
  SolutionReader reader("flow");
  const BlockIndex last = reader.locate(2);
  EXPECT_EQ(reader.parameters(2), solution.blocks[2].parameters);
  EXPECT_EQ(list_of(reader.read(0, FlowArray{2})), list_of(solution.blocks[0].variables[1]));
  EXPECT_EQ(reader.locate(2), last);
  const Grid grid = sample_grid({.precision = Precision::double_precision}, true);
  write_grid("grid", grid);
  GridReader grids("grid");
  EXPECT_THAT(grids.locate(2), SizeIs(4));
  EXPECT_EQ(grids.read(0).x, grid.blocks[0].x);
}

TEST_F(FrontIndex, RefusesText) {
  write_file("grid", " 1\n 1 1 1\n 0.5 0.25 0.125\n");
  const Error error = error_of([] { static_cast<void>(index_grid("grid")); });
  EXPECT_EQ(error.kind(), ErrorKind::unsupported);
  EXPECT_THAT(error.what(), HasSubstr("grid: is text, whose values have no fixed places"));
}

TEST_F(FrontIndex, NamesTheMarkerThatContradictsTheForm) {
  write_file("grid", Bytes().record(Bytes().i4s({2, 1, 1})).i4(24).r4s({1, 2, 3, 4, 5, 6}).i4(20));
  const StatedGridForm form = stated_as(GridForm{.multiblock = false});
  const Error error = error_of([&] { static_cast<void>(index_grid("grid", form)); });
  EXPECT_EQ(error.kind(), ErrorKind::damaged);
  EXPECT_EQ(error.details().record, 2);
  EXPECT_EQ(error.details().offset, 48);
}

TEST_F(FrontIndex, NamesTheBlockThatTheFileCutsOff) {
  write_file("grid", Bytes().i4s({2, 1, 1, 2, 1, 1}).r4s({1, 2, 3, 4, 5}));
  const StatedGridForm form = stated_as(GridForm{.coding = {.encoding = Encoding::binary}});
  const Error error = error_of([&] { static_cast<void>(index_grid("grid", form)); });
  EXPECT_EQ(error.kind(), ErrorKind::damaged);
}

TEST_F(FrontIndex, OfAReservedFileIsThatOfAWrittenOne) {
  for (const std::int64_t limit :
       {std::int64_t{7}, mod_p3dgrid::recordio::default_subrecord_limit}) {
    mod_p3dgrid::recordio::set_subrecord_limit(limit);
    for_each_coding([](const Coding& coding) {
      SCOPED_TRACE(describe(coding));
      const Grid grid = sample_grid(coding, true);
      const GridForm form{coding, true, true};
      write_grid("written", grid, stated_as(form));
      static_cast<void>(std::remove("reserved"));
      GridWriter writer("reserved", form, grid.extents());
      for (std::size_t b = 0; b < grid.blocks.size(); ++b) writer.reserve();
      writer.close();
      const Index index = index_grid("reserved", stated_as(form));
      EXPECT_EQ(index.blocks, index_grid("written", stated_as(form)).blocks);
      std::string zeroed = read_file("written");
      for (const BlockIndex& block : index.blocks) {
        for (const StoredArray& array : block) {
          for (const ByteRange& range : array.ranges) {
            std::fill_n(zeroed.begin() + range.offset, range.bytes, '\0');
          }
        }
      }
      EXPECT_EQ(read_file("reserved"), zeroed);
    });
  }
}

TEST_F(FrontIndex, OfAReservedSolutionIsThatOfAWrittenOne) {
  for_each_coding([](const Coding& coding) {
    SCOPED_TRACE(describe(coding));
    const Solution solution = sample_solution(coding);
    const SolutionOptions options = {.form = stated_as(solution.form)};
    write_solution("written", solution, options.form);
    static_cast<void>(std::remove("reserved"));
    SolutionWriter writer("reserved", header_to_write(solution, options.form));
    for (const SolutionBlock& block : solution.blocks) writer.reserve(block.parameters);
    writer.close();
    const Index index = index_solution("reserved", options);
    EXPECT_EQ(index.blocks, index_solution("written", options).blocks);
    const Solution read = read_solution("reserved", options);
    EXPECT_EQ(read.blocks[0].parameters, solution.blocks[0].parameters);
    EXPECT_TRUE(is_zero(read.blocks[0].variables[0]));
  });
}

TEST_F(FrontIndex, CannotBeReservedInText) {
  GridWriter writer("grid", {.coding = {.encoding = Encoding::formatted}}, {{1}, {1}, {1}});
  EXPECT_EQ(error_of([&] { writer.reserve(); }).kind(), ErrorKind::unsupported);
}

}  // namespace
}  // namespace p3dgrid
