#include "p3dgrid/solution.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/front_case.hpp"
#include "support/scratch_folder.hpp"

namespace p3dgrid {
namespace {

using namespace test_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FrontSolution : public InScratchFolder {};

/// A double-precision solution of blocks of 2x1x1 and 1x1x1 points.
Bytes two_flows() {
  return Bytes()
      .record(Bytes().i4(2))
      .record(Bytes().i4s({2, 1, 1, 1, 1, 1}))
      .record(Bytes().r8s({0.1, 0.2, 0.3, 0.4}))
      .record(Bytes().r8s({1.1, 1.2, 2.1, 2.2, 3.1, 3.2, 4.1, 4.2, 5.1, 5.2}))
      .record(Bytes().r8s({0.5, 0.6, 0.7, 0.8}))
      .record(Bytes().r8s({1, 2, 3, 4, 5}));
}

/// Layout 101: a block of 2 points with triplets and the extension of three variables.
Bytes extended() {
  return Bytes()
      .record(Bytes().i4s({2, 1, 1, 7}).r8(0.25))
      .record(Bytes().r8s({-1, -2, -3, -4, -5, -6, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}))
      .record(Bytes().i4(41))
      .record(Bytes().r8s({11, 12, 13, 14, 15, 16}))
      .record(Bytes().i4(999));
}

/// Layout 100 in single precision: a block of 2 points with triplets and variables 1 to 6.
Bytes with_triplets() {
  return Bytes()
      .record(Bytes().i4(7).r4(0.25).i4(1))
      .record(Bytes().r4s({-1, -2, -3, -4, -5, -6, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}))
      .record(Bytes().r4s({11, 12}));
}

/// An OVERFLOW solution in double precision: a block of 2 points, 6 variables and no species. The
/// eighth of 16 flow parameters is the integer 3.
Bytes of_overflow() {
  return Bytes()
      .record(Bytes().i4s({2, 1, 1, 6, 0}))
      .record(Bytes()
                  .r8s({0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7})
                  .i4(3)
                  .r8s({0.9, 1.0, 1.1, 1.2, 1.3, 1.4, 1.5, 1.6}))
      .record(Bytes().r8s({1.1, 1.2, 2.1, 2.2, 3.1, 3.2, 4.1, 4.2, 5.1, 5.2, 6.1, 6.2}));
}

const RestartForm layout_101 = {.layout = Layout::single_block,
                                .coding = {.precision = Precision::double_precision},
                                .sections = Sections{{1, 5}}};

TEST_F(FrontSolution, IsReadInThePrecisionOfItsFile) {
  write_file("flow", two_flows());
  const Solution flow = read_solution("flow");
  EXPECT_EQ(flow.form.layout, Layout::solution);
  EXPECT_EQ(flow.form.sections, (Sections{{1, 5}}));
  ASSERT_EQ(flow.blocks.size(), 2U);
  EXPECT_THAT(flow.blocks[0].parameters, ElementsAre(0.1, 0.2, 0.3, 0.4));
  ASSERT_EQ(flow.blocks[0].variables.size(), 5U);
  EXPECT_EQ(flow.blocks[0].variables[0].precision(), Precision::double_precision);
  EXPECT_THAT(list_of(flow.blocks[0].variables[0]), ElementsAre(1.1, 1.2));
  EXPECT_THAT(list_of(flow.blocks[0].variables[4]), ElementsAre(5.1, 5.2));
  EXPECT_THAT(list_of(flow.blocks[1].variables[2]), ElementsAre(3));
  EXPECT_TRUE(flow.blocks[0].triplets.empty());
}

TEST_F(FrontSolution, HasTripletsWhereItsRecordsShowThem) {
  write_file("flow", with_triplets());
  const Grid grid{.blocks = {{.extents = {2, 1, 1}}}};
  const RestartForm stated{.layout = Layout::triplets, .sections = Sections{{1, 5}, {6, 6}}};
  for (const SolutionOptions& options : {SolutionOptions{.form = stated_as(stated), .grid = &grid},
                                         SolutionOptions{.grid = &grid}}) {
    const Solution flow = read_solution("flow", options);
    EXPECT_EQ(flow.form, stated);
    ASSERT_EQ(flow.blocks.front().triplets.size(), 3U);
    EXPECT_THAT(list_of(flow.blocks.front().triplets[2]), ElementsAre(-5, -6));
    EXPECT_THAT(list_of(flow.blocks.front().variables[5]), ElementsAre(11, 12));
    write_solution("copy", flow);
    EXPECT_EQ(read_file("copy"), read_file("flow"));
  }
  const StatedRestartForm without =
      stated_as(RestartForm{.layout = Layout::triplets, .sections = Sections{{1, 8}, {9, 9}}});
  const Solution flow = read_solution("flow", {.form = without, .grid = &grid});
  EXPECT_TRUE(flow.blocks.front().triplets.empty());
  EXPECT_THAT(list_of(flow.blocks.front().variables[8]), ElementsAre(11, 12));
}

TEST_F(FrontSolution, IsOneOfOverflow) {
  write_file("flow", of_overflow());
  const RestartForm form{.layout = Layout::overflow,
                         .coding = {.precision = Precision::double_precision},
                         .multiblock = false,
                         .sections = Sections{{1, 6}}};
  for (const StatedRestartForm& stated : {StatedRestartForm{}, stated_as(form)}) {
    const Solution flow = read_solution("flow", {.form = stated});
    EXPECT_EQ(flow.form.layout, Layout::overflow);
    EXPECT_EQ(flow.run.species, 0);
    EXPECT_THAT(flow.blocks[0].parameters, ElementsAre(0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 3, 0.9,
                                                       1.0, 1.1, 1.2, 1.3, 1.4, 1.5, 1.6));
    ASSERT_EQ(flow.blocks[0].variables.size(), 6U);
    EXPECT_THAT(list_of(flow.blocks[0].variables[5]), ElementsAre(6.1, 6.2));
  }
}

TEST_F(FrontSolution, OfOverflowIsReadArrayByArray) {
  write_file("flow", of_overflow());
  SolutionReader reader("flow");
  EXPECT_THAT(reader.header().variables, ElementsAre(6));
  EXPECT_THAT(list_of(reader.read(0, FlowArray{6}, {.first = {1, 0, 0}})), ElementsAre(6.2));
  EXPECT_EQ(reader.parameters(0).size(), 16U);
}

TEST_F(FrontSolution, OfOverflowIsWrittenInOtherLayouts) {
  write_file("flow", of_overflow());
  const Solution flow = read_solution("flow");
  write_solution("functions", flow, {.layout = Layout::function});
  const Solution functions = read_solution("functions");
  ASSERT_EQ(functions.variables(), 6);
  EXPECT_THAT(list_of(functions.blocks[0].variables[5]), ElementsAre(6.1, 6.2));
  write_solution("five", flow, {.layout = Layout::solution});
  const Solution five = read_solution("five");
  EXPECT_EQ(five.variables(), 5);
  EXPECT_THAT(five.blocks[0].parameters, ElementsAre(0.1, 0.2, 0.3, 0.4));
  const StatedRestartForm all{.layout = Layout::solution, .sections = Sections{{1, 5}, {6, 6}}};
  write_solution("six", flow, all);
  EXPECT_EQ(read_solution("six").variables(), 6);
  const Error error = error_of([&] { write_solution("none", flow); });
  EXPECT_EQ(error.kind(), ErrorKind::unsupported);
  EXPECT_THAT(error.what(), HasSubstr("layout overflow can be read, but not written"));
}

TEST_F(FrontSolution, OfOverflowHasRecordsOnly) {
  write_file("flow", of_overflow());
  const RestartForm form{.layout = Layout::overflow,
                         .coding = {.encoding = Encoding::binary},
                         .sections = Sections{{1, 6}}};
  const Error error =
      error_of([&] { static_cast<void>(read_solution("flow", {.form = stated_as(form)})); });
  EXPECT_THAT(error.what(), HasSubstr("layout overflow has no files that are binary"));
  write_file("flow", Bytes().record(Bytes().i4s({2, 1, 1, 6, 0})));
  const RestartForm cut{
      .layout = Layout::overflow, .multiblock = false, .sections = Sections{{1, 6}}};
  const Error other =
      error_of([&] { static_cast<void>(read_solution("flow", {.form = stated_as(cut)})); });
  EXPECT_THAT(other.what(), HasSubstr("a record of more than four flow parameters"));
}

TEST_F(FrontSolution, IsWrittenAsItWasRead) {
  for (const Bytes& bytes : {two_flows(), extended()}) {
    write_file("flow", bytes);
    write_solution("copy", read_solution("flow"));
    EXPECT_EQ(read_file("copy"), bytes.str());
  }
}

TEST_F(FrontSolution, IsWrittenInTheFormThatIsStated) {
  write_file("flow", two_flows());
  write_solution("copy", read_solution("flow"),
                 {.encoding = Encoding::binary, .precision = Precision::single_precision});
  EXPECT_EQ(read_file("copy"),
            Bytes()
                .i4s({2, 2, 1, 1, 1, 1, 1})
                .r4s({0.1F, 0.2F, 0.3F, 0.4F})
                .r4s({1.1F, 1.2F, 2.1F, 2.2F, 3.1F, 3.2F, 4.1F, 4.2F, 5.1F, 5.2F})
                .r4s({0.5F, 0.6F, 0.7F, 0.8F, 1, 2, 3, 4, 5})
                .str());
}

TEST_F(FrontSolution, HasStepTripletsAndExtensions) {
  write_file("flow", extended());
  const Solution flow = read_solution("flow", {.form = stated_as(layout_101)});
  EXPECT_EQ(flow.run.nstep, 7);
  EXPECT_EQ(flow.run.dtau, 0.25);
  EXPECT_THAT(flow.flags, ElementsAre(41, 999));
  const SolutionBlock& block = flow.blocks.at(0);
  ASSERT_EQ(block.triplets.size(), 3U);
  EXPECT_THAT(list_of(block.triplets[2]), ElementsAre(-5, -6));
  ASSERT_EQ(block.variables.size(), 8U);
  EXPECT_THAT(list_of(block.variables[7]), ElementsAre(15, 16));
}

TEST_F(FrontSolution, BecomesAFunctionFileWithAllVariables) {
  write_file("flow", extended());
  write_solution("copy", read_solution("flow"), {.layout = Layout::function, .multiblock = false});
  const Solution copy = read_solution("copy");
  EXPECT_EQ(copy.form.layout, Layout::function);
  ASSERT_EQ(copy.variables(), 8);
  EXPECT_THAT(list_of(copy.blocks[0].variables[7]), ElementsAre(15, 16));
}

TEST_F(FrontSolution, IsReadArrayByArrayInAnyOrder) {
  write_file("two", two_flows());
  write_file("extended", extended());
  for (const Encoding encoding : {Encoding::unformatted, Encoding::formatted, Encoding::binary}) {
    SCOPED_TRACE(name_of(encoding));
    write_solution("flow", read_solution("two"), {.encoding = encoding});
    SolutionReader reader("flow");
    EXPECT_THAT(list_of(reader.read(0, {.number = 2})), ElementsAre(2.1, 2.2));
    EXPECT_THAT(list_of(reader.read(0, {.number = 4})), ElementsAre(4.1, 4.2));
    EXPECT_THAT(list_of(reader.read(1, {.number = 5})), ElementsAre(5));
    EXPECT_THAT(list_of(reader.read(0, {.number = 1})), ElementsAre(1.1, 1.2));
    EXPECT_THAT(list_of(reader.read(0, {.number = 5}, {.first = {1, 0, 0}})), ElementsAre(5.2));
    EXPECT_THAT(reader.read(1).parameters, ElementsAre(0.5, 0.6, 0.7, 0.8));
    EXPECT_EQ(error_of([&] { static_cast<void>(reader.read(0, {.number = 6})); }).kind(),
              ErrorKind::argument);
    EXPECT_EQ(error_of([&] { static_cast<void>(reader.read(2)); }).kind(), ErrorKind::argument);

    write_solution("flow", read_solution("extended"), {.encoding = encoding});
    SolutionReader other("flow", {.form = {.layout = Layout::single_block,
                                           .coding = {.precision = Precision::double_precision}}});
    EXPECT_THAT(list_of(other.read(0, {.number = 6})), ElementsAre(11, 12));
    EXPECT_THAT(list_of(other.read(0, {.number = 2, .triplet = true})), ElementsAre(-3, -4));
  }
}

TEST_F(FrontSolution, GoingBackKeepsWhatIsKnownOfTheFile) {
  write_file("flow", two_flows());
  SolutionReader reader("flow");
  const auto known = reader.header().variables;
  EXPECT_THAT(known, ElementsAre(5, 5));
  EXPECT_THAT(list_of(reader.read(1, {.number = 5})), ElementsAre(5));
  EXPECT_THAT(list_of(reader.read(0, {.number = 1})), ElementsAre(1.1, 1.2));
  EXPECT_EQ(reader.header().variables, known);
  EXPECT_EQ(reader.header().extents, (Extents{{2, 1}, {1, 1}, {1, 1}}));
}

TEST_F(FrontSolution, IsWrittenArrayByArray) {
  write_file("flow", extended());
  const Solution flow = read_solution("flow");
  SolutionWriter writer("copy", header_to_write(flow));
  std::vector<FlowArray> asked;
  writer.write({}, [&](const FlowArray& array) {
    asked.push_back(array);
    return flow.blocks[0].of(array);
  });
  writer.close();
  EXPECT_EQ(read_file("copy"), extended().str());
  ASSERT_EQ(asked.size(), 11U);
  EXPECT_EQ(asked.front(), (FlowArray{1, true}));
  EXPECT_EQ(asked.back(), (FlowArray{8, false}));
}

TEST_F(FrontSolution, TakesExtentsFromItsGrid) {
  const Bytes bare = Bytes().record(Bytes().r4s({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  write_file("flow", bare);
  const StatedRestartForm form = {.layout = Layout::bare,
                                  .coding = {.precision = Precision::single_precision}};
  const RestartForm whole = {.layout = Layout::bare, .sections = Sections{{1, 5}}};
  SolutionReader alone("flow", {.form = stated_as(whole)});
  EXPECT_TRUE(alone.header().extents.i.empty());
  EXPECT_EQ(error_of([&] { static_cast<void>(alone.read(0)); }).kind(), ErrorKind::mismatch);
  Grid grid{.blocks = {Block{.extents = {2, 1, 1}}}};
  const Solution flow = read_solution("flow", {.form = form, .grid = &grid});
  EXPECT_THAT(list_of(flow.blocks.at(0).variables.at(1)), ElementsAre(3, 4));
  write_solution("copy", flow);
  EXPECT_EQ(read_file("copy"), bare.str());
}

TEST_F(FrontSolution, MustBelongToItsGrid) {
  write_file("flow", two_flows());
  Grid grid{.blocks = {Block{.extents = {2, 1, 1}}, Block{.extents = {1, 1, 2}}}};
  const Error other = error_of([&] { static_cast<void>(read_solution("flow", {.grid = &grid})); });
  EXPECT_EQ(other.kind(), ErrorKind::mismatch);
  EXPECT_STREQ(other.what(),
               "flow: does not belong to its grid: its block 2 is 1x1x1, the grid's 1x1x2");
  grid.blocks.pop_back();
  EXPECT_EQ(error_of([&] { static_cast<void>(read_solution("flow", {.grid = &grid})); }).kind(),
            ErrorKind::mismatch);
}

TEST_F(FrontSolution, FunctionFilesHaveTheirOwnNumberInEachBlock) {
  const Bytes functions = Bytes()
                              .record(Bytes().i4(2))
                              .record(Bytes().i4s({1, 1, 1, 2, 2, 1, 1, 1}))
                              .record(Bytes().r4s({1, 2}))
                              .record(Bytes().r4s({3, 4}));
  write_file("flow", functions);
  const Solution flow = read_solution("flow");
  EXPECT_EQ(flow.blocks.at(0).variables.size(), 2U);
  EXPECT_EQ(flow.blocks.at(1).variables.size(), 1U);
  EXPECT_THAT(list_of(flow.blocks[1].variables[0]), ElementsAre(3, 4));
  // The form that has been found holds for the file.
  EXPECT_EQ(read_solution("flow", {.form = stated_as(flow.form)}).variables(), 2);
  write_solution("copy", flow);
  EXPECT_EQ(read_file("copy"), functions.str());
}

TEST_F(FrontSolution, InvalidArgumentsLeaveTheFileUnchanged) {
  write_file("file", "as it is");
  write_file("flow", two_flows());
  const Solution flow = read_solution("flow");
  const auto expect_refused = [&](const Solution& solution, const StatedRestartForm& form,
                                  const char* words) {
    const Error error = error_of([&] { write_solution("file", solution, form); });
    EXPECT_THAT(error.what(), HasSubstr(words));
    EXPECT_EQ(read_file("file"), "as it is");
  };
  expect_refused(flow, {.layout = Layout::talven}, "can be read, but not written");
  expect_refused(flow, {.layout = Layout::single_block}, "found 2 blocks, expected one");
  expect_refused(flow, {.multiblock = false}, "found 2 blocks, expected one");
  expect_refused(flow, {.sections = Sections{{1, 6}}}, "found 0 values of variable 6, expected 2");
  expect_refused(flow, {.sections = Sections{{0, 5}}}, "expected variables from 1 on");
  expect_refused(flow, {.layout = Layout::triplets}, "found 0 values of the triplets");
  Solution bare = flow;
  bare.blocks[1].parameters.clear();
  expect_refused(bare, {}, "found 0 flow parameters, expected 4");
}

TEST_F(FrontSolution, DamageHasItsPlace) {
  write_file("flow", two_flows().str().substr(0, 150));
  EXPECT_EQ(error_of([] { static_cast<void>(read_solution("flow")); }).kind(), ErrorKind::damaged);
  const RestartForm form = {.coding = {.precision = Precision::double_precision},
                            .sections = Sections{{1, 5}}};
  const Error error =
      error_of([&] { static_cast<void>(read_solution("flow", {.form = stated_as(form)})); });
  EXPECT_EQ(error.kind(), ErrorKind::damaged);
  EXPECT_THAT(error.what(), HasSubstr("flow: record 4, byte 150: found the end of the file"));

  write_file("flow", extended().str().substr(0, extended().str().size() - 12) +
                         Bytes().record(Bytes().i4(5)).record(Bytes().i4(5)).str());
  const Error chain =
      error_of([&] { static_cast<void>(read_solution("flow", {.form = stated_as(layout_101)})); });
  EXPECT_THAT(chain.what(), HasSubstr("found three flags, none of them 999"));
}

TEST_F(FrontSolution, IsReadFromItsBeginningAfterAnError) {
  write_file("flow", "1\n2 1 1\n0 0 0 0\n1 2 3 word 5 6 7 8 9 10 11 12 13\n");
  const RestartForm form = {.coding = {.encoding = Encoding::formatted},
                            .sections = Sections{{1, 5}}};
  SolutionReader reader("flow", {.form = stated_as(form)});
  EXPECT_THAT(list_of(reader.read(0, FlowArray{1})), ElementsAre(1, 2));
  for (const std::int32_t variable : {2, 3, 4}) {
    const Error error = error_of([&] { static_cast<void>(reader.read(0, FlowArray{variable})); });
    EXPECT_EQ(error.details().line, 4) << variable;
  }
  EXPECT_THAT(list_of(reader.read(0, FlowArray{1})), ElementsAre(1, 2));
  EXPECT_THAT(reader.parameters(0), ElementsAre(0, 0, 0, 0));
}

TEST_F(FrontSolution, OfDoublesHasTheirDigitsInText) {
  write_file("flow", Bytes()
                         .record(Bytes().i4(1))
                         .record(Bytes().i4s({1, 1, 1}))
                         .record(Bytes().r8s({123456.7890625, 0.1, 0.1F, 1}))
                         .record(Bytes().r8s({0.1F, 2, 3, 4, 5})));
  write_solution("text", read_solution("flow"), {.encoding = Encoding::formatted});
  const Solution text = read_solution("text");
  EXPECT_THAT(text.blocks[0].parameters, ElementsAre(123456.7890625, 0.1, 0.1F, 1));
  EXPECT_EQ(text.blocks[0].variables[0][0], 0.1F);
  write_solution("again", text);
  EXPECT_EQ(read_file("again"), read_file("text"));
  SolutionReader reader("text");
  SolutionWriter writer("again", header_to_write(reader.header()));
  writer.write(reader.read(0));
  writer.close();
  EXPECT_EQ(read_file("again"), read_file("text"));
}

}  // namespace
}  // namespace p3dgrid
