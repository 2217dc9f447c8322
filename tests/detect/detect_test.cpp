#include "p3dgrid/detect.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "MOD_P3DReader.hpp"
#include "detect/steps.hpp"
#include "grid/grid_case.hpp"
#include "p3dgrid/layout.hpp"
#include "restart/restart_case.hpp"
#include "support/recording_host.hpp"

namespace p3dgrid {
namespace {

using test_support::Bytes;
using test_support::HandMadeGrid;
using test_support::HandMadeRestart;
using test_support::write_file;
using ::testing::HasSubstr;

class Detects : public test_support::InScratchFolder {};

Coding coding_of(int iformat, bool dblprec) {
  return {.encoding = Encoding{iformat},
          .precision = dblprec ? Precision::double_precision : Precision::single_precision};
}

/// Text is found in single precision, whatever it was made of.
Coding as_found(Coding coding) {
  if (is_text(coding)) coding.precision = Precision::single_precision;
  return coding;
}

GridForm form_of(const test_support::GridForm& form) {
  return {coding_of(form.iformat, form.dblprec), form.multiblock, form.iblank};
}

RestartForm form_of(const test_support::RestartForm& form) {
  RestartForm found{Layout{form.layout}, coding_of(form.iformat, form.dblprec), form.multiblock,
                    Sections()};
  for (const auto& [first, last] : form.sections) found.sections->push_back({first, last});
  return found;
}

/// The extents of the hand-made solutions.
std::shared_ptr<const Extents> extents_of(int blocks) {
  Extents extents;
  for (int b = 0; b < blocks; ++b) {
    extents.i.push_back(HandMadeRestart::extent(b, 0));
    extents.j.push_back(HandMadeRestart::extent(b, 1));
    extents.k.push_back(HandMadeRestart::extent(b, 2));
  }
  return std::make_shared<const Extents>(extents);
}

TEST_F(Detects, GridsInEveryForm) {
  for (const auto& form : test_support::all_grid_forms()) {
    SCOPED_TRACE(test_support::name_of(form));
    const HandMadeGrid grid(form);
    write_file("grid", grid.bytes(false));
    GridForm expected = form_of(form);
    expected.coding = as_found(expected.coding);
    const Detection found = detect_grid("grid");
    ASSERT_TRUE(found.proven());
    const auto same = [&](const Reading& reading) { return reading.grid() == expected; };
    const auto reading = std::ranges::find_if(found.fitting, same);
    ASSERT_NE(reading, found.fitting.end());
    EXPECT_EQ(reading->extents->blocks(), grid.blocks());
    EXPECT_EQ(reading->extents->points(), grid.blocks() == 2 ? 11 : 8);
    EXPECT_TRUE(compare("grid", {expected}).whole());
    EXPECT_EQ(*extents_in("grid", {expected}), *reading->extents);
    // Everything stated, it is the only reading.
    EXPECT_EQ(detect_grid("grid", stated_as(expected)).fitting.size(), 1U);
    EXPECT_TRUE(detect_any("grid").proven());
  }
}

TEST_F(Detects, SolutionsInEveryForm) {
  for (const auto& form : test_support::all_restart_forms()) {
    SCOPED_TRACE(test_support::name_of(form));
    HandMadeRestart flow(form);
    if (form.layout == 0 && form.dblprec) flow.equation_set = 1;
    const bool written_so =
        reads_triplets(traits_of(Layout{form.layout}), coding_of(form.iformat, form.dblprec));
    flow.leading = written_so;
    write_file("flow", flow.bytes());
    RestartForm expected = form_of(form);
    expected.coding = as_found(expected.coding);
    const auto extents = extents_of(form.blocks);
    StatedRestartForm stated = stated_as(expected);
    const Detection found = detect_restart("flow", stated, extents);
    ASSERT_EQ(found.fitting.size(), 1U);
    EXPECT_EQ(found.fitting.front().restart(), expected);
    EXPECT_TRUE(
        compare("flow", {.form = expected, .extents = extents, .triplets = written_so}).whole());
    if (traits_of(expected.layout).holds_extents()) {
      EXPECT_EQ(*extents_in("flow", {expected}), *extents);
    }
    if (form.blocks == 3) continue;  // one of them without points, which other readings come before
    stated = {.layout = expected.layout};
    const Detection open = detect_restart("flow", stated, extents);
    EXPECT_TRUE(std::ranges::any_of(
        open.fitting, [&](const Reading& reading) { return reading.coding() == expected.coding; }));
  }
}

TEST_F(Detects, OlderLevelsAndExtensions) {
  test_support::RestartForm form{.layout = 0, .blocks = 2};
  for (const int integration : {2, 3}) {
    HandMadeRestart flow(form);
    flow.time_integration = integration;
    flow.older_levels = integration - 1;
    write_file("flow", flow.bytes());
    EXPECT_EQ(detect_restart("flow").fitting.size(), 1U);
  }
  form = {.layout = 101, .blocks = 1};
  for (const int iformat : {0, 1, 2}) {
    form.iformat = iformat;
    for (const auto& flags : {std::vector{999}, {1, 999}, {41, 999}, {41, 41, 999}, {1, 41, 999}}) {
      HandMadeRestart flow(form);
      flow.flags = flags;
      write_file("flow", flow.bytes());
      const Detection found = detect_restart("flow", {.layout = Layout::single_block});
      ASSERT_FALSE(found.fitting.empty());
      EXPECT_FALSE(found.fitting.front().unknown_flag);
    }
    HandMadeRestart flow(form);
    flow.flags = {7, 7, 7};
    write_file("flow", flow.bytes());
    EXPECT_TRUE(
        detect_restart("flow", {.layout = Layout::single_block, .sections = Sections{{1, 5}}})
            .fitting.empty());
  }
}

TEST_F(Detects, FilesOfTheOtherByteOrder) {
  const auto other = ByteOrder::native == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
  for (const auto& form : test_support::all_grid_forms()) {
    if (form.iformat == 1 || !form.multiblock) continue;
    write_file("grid", HandMadeGrid(form).bytes(true));
    test_support::Grid grid;
    grid.read("grid", form);
    const StatedCoding swapped{.byte_order = other};
    mod_p3dgrid::p3dsetcoding([swapped](std::string_view) { return swapped; });
    grid.write("other", form);
    mod_p3dgrid::p3dsetcoding({});
    GridForm expected = form_of(form);
    expected.coding.byte_order = other;
    const Detection found = detect_grid("other");
    EXPECT_TRUE(std::ranges::any_of(
        found.fitting, [&](const Reading& reading) { return reading.grid() == expected; }));
  }
}

/// What fits in one way to its last byte is read by that without a failed read.
void expect_readable(const std::string& name, const Detection& found) {
  if (found.fitting.size() != 1) return;
  const Reading& reading = found.fitting.front();
  if (!reading.checked || !reading.fit.whole()) return;
  const GridForm& form = reading.grid();
  mod_p3dgrid::p3dsetcoding([&](std::string_view) { return stated_as(form.coding); });
  test_support::Grid grid;
  grid.read(name.c_str(), {static_cast<int>(form.coding.encoding), holds_doubles(form.coding),
                           form.multiblock, form.iblank});
  mod_p3dgrid::p3dsetcoding({});
  EXPECT_EQ(test_support::count_calls("dispfilereaderror"), 0)
      << describe(reading) << ": " << mod_p3dgrid::p3dlastfailure().describe();
  EXPECT_EQ(grid.nblocks, reading.extents->blocks());
}

// The markers show the encoding of a file although its byte order is stated wrongly.
TEST_F(Detects, NoBinaryFileInMarkersOfTheOtherOrder) {
  for (const ByteOrder stated : {ByteOrder::little, ByteOrder::big}) {
    write_file("grid", HandMadeGrid(test_support::all_grid_forms().front()).bytes(true));
    Evidence file("grid");
    for (const Coding& coding : codings_of(file, {.byte_order = stated})) {
      EXPECT_EQ(coding.encoding, Encoding::unformatted);
    }
  }
}

TEST_F(Detects, NothingThatIsNotReadWithoutAFailure) {
  std::mt19937 chance(1);
  for (const auto& form : test_support::all_grid_forms()) {
    const std::string whole = HandMadeGrid(form).bytes(true);
    for (int n = 0; n < 60; ++n) {
      std::string damaged = whole;
      const auto place = [&](std::size_t size) {
        return std::uniform_int_distribution<std::size_t>(0, size - 1)(chance);
      };
      const std::string characters(" ,*/.e10\n\0\x04", 12);
      for (int change = 0; change < 1 + n % 3; ++change) {
        damaged[place(damaged.size())] = characters[place(characters.size())];
      }
      if (n % 4 == 0) damaged.resize(place(damaged.size()) + 1);
      write_file("grid", damaged);
      expect_readable("grid", detect_grid("grid"));
      EXPECT_GT(detect_any("grid").bytes_read, 0);
    }
  }
}

TEST_F(Detects, WhereFilesAreCut) {
  for (const auto& form : test_support::all_grid_forms()) {
    const std::string whole = HandMadeGrid(form).bytes(true);
    for (std::size_t length = 0; length < whole.size(); ++length) {
      write_file("grid", whole.substr(0, length));
      const Detection found = detect_grid("grid", stated_as(form_of(form)));
      // Text may end without a line end.
      const bool fits = !found.fitting.empty() && found.fitting.front().fit.whole();
      EXPECT_TRUE(!fits || form.iformat == 1) << test_support::name_of(form) << length;
      if (fits || length == 0) continue;
      EXPECT_FALSE(found.nearest.empty() && found.beginning.empty() && found.damage.empty());
    }
  }
}

/// The remark on a file that is none of those that can be read.
std::string foreign(const Bytes& content) {
  write_file("file", content);
  return detect_any("file").foreign;
}

Bytes reals(int count) {
  Bytes all;
  for (int n = 0; n < count; ++n) all.r4(static_cast<float>(n) / 4);
  return all;
}

TEST_F(Detects, FormsThatCannotBeRead) {
  const Bytes count = Bytes().i4(1);
  const Bytes extents = Bytes().i4s({5, 4, 2});
  const auto in_records = [&](const Bytes& piece, int pieces) {
    Bytes file = Bytes().record(count).record(extents);
    for (int n = 0; n < pieces; ++n) file.record(piece);
    return file;
  };
  EXPECT_THAT(foreign(in_records(reals(40), 3)), HasSubstr("in several records"));
  EXPECT_THAT(foreign(in_records(reals(60), 2)), HasSubstr("in several records"));
  EXPECT_THAT(foreign(Bytes()
                          .record(Bytes().i4s({1, 0}))
                          .record(Bytes().i4s({5, 0, 4, 0, 2, 0}))
                          .record(reals(120))),
              HasSubstr("integers of 64 bits"));
  write_file("file", std::string("1\r2 1 1\r1 2 3 4 5 6\r"));
  EXPECT_THAT(detect_any("file").foreign, HasSubstr("carriage returns alone"));
}

/// The only reading of a file.
Reading only_reading(const Detection& found) {
  if (found.fitting.size() == 1) return found.fitting.front();
  ADD_FAILURE() << found.fitting.size() << " readings";
  return {};
}

TEST_F(Detects, FilesOfTwoDimensions) {
  const Bytes count = Bytes().i4(1);
  const Bytes extents = Bytes().i4s({9, 7});
  const Extents expected{{9}, {7}, {1}};
  const Bytes header = Bytes().record(count).record(extents);
  write_file("grid", Bytes(header).record(reals(126)));
  write_file("blanked", Bytes(header).record(reals(126).append(Bytes(reals(63)))));
  write_file(
      "text", "9 7\n" + [] {
        std::string lines;
        for (int n = 0; n < 63; ++n) lines += "0.5 1.5\n";
        return lines;
      }());
  for (const char* name : {"grid", "blanked", "text"}) {
    const Reading reading = only_reading(detect_any(name));
    ASSERT_TRUE(reading.is_grid());
    EXPECT_EQ(reading.coding().dimensions, Dimensions::two);
    EXPECT_EQ(*reading.extents, expected);
    EXPECT_EQ(only_reading(detect_grid(name)).grid(), reading.grid());
    EXPECT_EQ(*extents_in(name, {reading.form}), expected);
    EXPECT_TRUE(compare(name, {reading.form}).whole());
    const StatedCoding three{.dimensions = Dimensions::three};
    EXPECT_TRUE(detect_grid(name, {.coding = three}).fitting.empty());
  }
  write_file("flow", Bytes(header).record(reals(4)).record(reals(4 * 63)));
  Reading flow = only_reading(detect_any("flow"));
  EXPECT_EQ(flow.restart().layout, Layout::solution);
  EXPECT_EQ(*flow.restart().sections, (Sections{{1, 5}}));
  write_file("flow", Bytes(header).record(reals(4)).record(reals(3 * 63)).record(reals(2 * 63)));
  flow = only_reading(detect_any("flow"));
  EXPECT_EQ(*flow.restart().sections, (Sections{{1, 3}, {4, 6}}));
  write_file("flow", Bytes().record(count).record(Bytes().i4s({9, 7, 2})).record(reals(2 * 63)));
  flow = only_reading(detect_any("flow"));
  EXPECT_EQ(flow.restart().layout, Layout::function);
  EXPECT_EQ(flow.coding().dimensions, Dimensions::two);
}

// A grid in two dimensions with count and blanking is as long as a block 1 x 9 x 7 without.
TEST_F(Detects, PlanesOfEitherKind) {
  const Bytes header = Bytes().i4s({1, 9, 7});
  const auto dimensions_with = [&](const Bytes& third) {
    write_file("grid", Bytes(header).append(reals(126)).append(third));
    return only_reading(detect_grid("grid")).coding().dimensions;
  };
  Bytes zeros;
  Bytes blanking;
  for (int n = 0; n < 63; ++n) {
    zeros.i4(0);
    blanking.i4(n % 3);
  }
  EXPECT_EQ(dimensions_with(reals(63)), Dimensions::three);
  EXPECT_EQ(dimensions_with(zeros), Dimensions::three);
  EXPECT_EQ(dimensions_with(blanking), Dimensions::two);
  const GridForm plane{
      {Encoding::binary, Precision::single_precision, ByteOrder::native}, false, false};
  EXPECT_THAT(compare("grid", {plane}).what, HasSubstr("integers in the place of its third"));
}

/// A grid of one block of 5 x 4 x 2 points with markers of 8 bytes.
Bytes wide_grid(const Bytes& body) {
  return Bytes().wide_record(Bytes().i4(1)).wide_record(Bytes().i4s({5, 4, 2})).wide_record(body);
}

TEST_F(Detects, MarkersOfEightBytes) {
  const std::string whole = wide_grid(reals(120)).str();
  write_file("grid", whole);
  for (const StatedCoding& coding :
       {StatedCoding{}, StatedCoding{.encoding = Encoding::unformatted},
        StatedCoding{.marker_bytes = MarkerBytes::eight}}) {
    const Detection found = detect_grid("grid", {.coding = coding});
    ASSERT_EQ(found.fitting.size(), 1U);
    EXPECT_EQ(found.fitting.front().coding(),
              (Coding{.byte_order = ByteOrder::native, .marker_bytes = MarkerBytes::eight}));
    EXPECT_EQ(found.fitting.front().records, 3);
  }
  EXPECT_TRUE(detect_grid("grid", {.coding = {.marker_bytes = MarkerBytes::four}}).fitting.empty());
  EXPECT_TRUE(detect_any("grid").proven());
  for (std::size_t length = 2 * 8 + 4; length < whole.size(); ++length) {
    write_file("grid", whole.substr(0, length));
    const Detection found = detect_grid("grid");
    EXPECT_TRUE(found.fitting.empty()) << length;
    // With the whole header the reading is known.
    if (length < 2 * 16 + 4 + 12) continue;
    ASSERT_FALSE(found.nearest.empty()) << length;
    EXPECT_EQ(found.nearest.front().coding().marker_bytes, MarkerBytes::eight) << length;
  }
}

TEST_F(Detects, DamagedMarkersOfEightBytes) {
  const auto what = [](std::size_t offset, std::int64_t marker) {
    std::string damaged = wide_grid(reals(120)).str();
    std::memcpy(damaged.data() + offset, &marker, sizeof marker);
    write_file("grid", damaged);
    const Detection found = detect_grid("grid");
    return found.nearest.empty() ? found.damage : found.damage + found.nearest.front().fit.what;
  };
  EXPECT_THAT(what(48, -480), HasSubstr("its marker at byte 48 says -480, which is no length"));
  EXPECT_THAT(what(48, std::numeric_limits<std::int64_t>::max()), HasSubstr("which is no length"));
  EXPECT_THAT(what(48, std::int64_t{1} << 62),
              HasSubstr("holds 4611686018427387904 bytes by its marker"));
  EXPECT_THAT(what(48 + 8 + 480, 481), HasSubstr("says 481 where 480 is expected"));
  EXPECT_THAT(what(0, 6), HasSubstr("its marker at byte 0 says 6 where 4 is expected"));
  EXPECT_THAT(what(20, -12), HasSubstr("record 2 at byte 20: its marker at byte 20 says -12"));
}

TEST_F(Detects, DamagedHeaders) {
  const Bytes body = reals(120);
  const auto damage = [](const Bytes& content) {
    write_file("file", content);
    return detect_any("file").damage;
  };
  const Bytes count = Bytes().i4(2);
  EXPECT_THAT(damage(Bytes().record(count)), HasSubstr("is cut short"));
  EXPECT_THAT(damage(Bytes().record(count).record(Bytes().i4s({1, 2, 3}))),
              HasSubstr("holds 12 bytes by its marker where 24 are expected"));
  EXPECT_THAT(damage(Bytes().record(count).record(Bytes().i4s({1, 1, 1, -1, 2, 3}))),
              HasSubstr("gives block 2 the extents -1 2 3"));
  EXPECT_THAT(damage(Bytes().i4s({4, 2, 5}).record(Bytes().i4s({1, 2, 3, 1, 2, 3}))),
              HasSubstr("its marker at byte 8 says 5 where 4 is expected"));
  write_file("file", std::string(" 5000\n 15000*0\n"));
  EXPECT_THAT(detect_any("file").damage, HasSubstr("has no lines for them"));
  for (const char* content : {"# a wing\n", "\x1f\x8b\x08 compressed", "\1\2\3\4"}) {
    write_file("file", std::string(content));
    EXPECT_FALSE(detect_any("file").beginning.empty());
  }
}

TEST_F(Detects, TextAsAReaderTakesIt) {
  const auto fit = [](const std::string& text, bool iblank) {
    write_file("grid", text);
    return compare("grid", {GridForm{{.encoding = Encoding::formatted}, true, iblank}});
  };
  for (const char* text :
       {"1\n2 1 1\n1 2 3 4 5 6\n", "1\n2,2*1\n,2,3\n,4,5\n,6\n", "1 note\n2 1 1\n6*0.5",
        "1\n2 1 1\n1 2 /\n", "1\n\n2 1 1\n\n3*1d0\n,,4 5\n"}) {
    EXPECT_TRUE(fit(text, false).whole()) << text << fit(text, false).what;
  }
  EXPECT_THAT(fit("1\n2 1 1\n1 2 3 4 5 6\n1 1.5\n", true).what,
              HasSubstr("line 4 holds \"1.5\" where an integer is expected"));
  EXPECT_THAT(fit("1\n2 1 1\n1 2 x 4 5 6\n", false).what,
              HasSubstr("line 3 holds \"x\" where a number is expected"));
  EXPECT_THAT(fit("1\n2 1 1\n1 2 3 4 5\n", false).what, HasSubstr("1 value short"));
  EXPECT_THAT(fit("1\n2 1 1\n1 2 3 4 5 6 7 8\n", false).what, HasSubstr("2 more values behind"));
  EXPECT_EQ(fit("1\n2 1 1\n1 2 3 4 5 6\n7\n", false).agreement, Fit::Agreement::longer);
  EXPECT_EQ(fit("1\n2 1 1\n1 2 3 4 5 6\nend\n", false).agreement, Fit::Agreement::remark);
  EXPECT_THAT(fit("2\n6*0\n\n", false).what, HasSubstr("a line for a record without values"));
  EXPECT_THAT(fit("2\n6*0\n\n7\n", false).what, HasSubstr("1 more value behind"));
}

TEST_F(Detects, FilesThatCannotBeLookedInto) {
  EXPECT_THROW(static_cast<void>(detect_any("none")), Error);
  EXPECT_THROW(static_cast<void>(detect_grid(".")), Error);
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  EXPECT_THROW(static_cast<void>(detect_restart("pipe")), Error);
  write_file("empty", std::string());
  const Detection found = detect_any("empty");
  EXPECT_TRUE(found.fitting.empty() && found.size == 0);
  write_file("text", "1\n1 1 1\n1 2 " + std::string(2 << 20, '3'));
  EXPECT_TRUE(detect_grid("text").fitting.empty());
}

TEST_F(Detects, WhatIsStatedMayBeNoForm) {
  HandMadeRestart flow({.layout = 2, .blocks = 1});
  write_file("flow", flow.bytes());
  for (const Sections& sections : {Sections{}, Sections{{0, 5}}, Sections{{1, 2147483647}}}) {
    for (const LayoutTraits& layout : all_layouts()) {
      const RestartForm form{layout.layout, {}, true, sections};
      EXPECT_FALSE(compare("flow", {.form = form, .triplets = layout.triplets}).whole() &&
                   layout.layout == Layout::solution);
      static_cast<void>(detect_restart("flow", stated_as(form), extents_of(1)));
    }
  }
  write_file("flow", std::string("1 1 1 0 0\n1 2 3 4 5 6 7 8\n,\n999\n"));
  const Detection found = detect_restart(
      "flow", {.layout = Layout::single_block, .sections = Sections{{1, solution_variables}}});
  ASSERT_FALSE(found.fitting.empty());
  EXPECT_TRUE(found.fitting.front().unknown_flag);
  EXPECT_EQ(found.fitting.front().records, 4);
}

TEST(Forms, SayWhatIsStatedOfThem) {
  const GridForm grid{{Encoding::binary, Precision::double_precision, ByteOrder::big}, false, true};
  EXPECT_EQ(describe(grid),
            "binary, big-endian, double precision, without block count, with blanking");
  EXPECT_EQ(applied_to(GridForm(), stated_as(grid)), grid);
  EXPECT_EQ(applied_to(grid, StatedGridForm()), grid);
  EXPECT_TRUE(is_complete(stated_as(grid)));
  StatedGridForm stated = stated_as(grid);
  stated.coding.byte_order.reset();
  EXPECT_FALSE(is_complete(stated));
  stated.coding.encoding = Encoding::formatted;
  EXPECT_TRUE(is_complete(stated));
  stated = stated_as(GridForm());
  EXPECT_TRUE(is_complete(stated));
  stated.coding.marker_bytes.reset();  // its default is taken
  EXPECT_TRUE(is_complete(stated));
  EXPECT_EQ(describe(Coding{.byte_order = ByteOrder::big, .marker_bytes = MarkerBytes::eight}),
            "unformatted, 8-byte markers, big-endian, single precision");
  EXPECT_EQ(describe(Coding{.encoding = Encoding::binary,
                            .byte_order = ByteOrder::big,
                            .marker_bytes = MarkerBytes::eight}),
            "binary, big-endian, single precision");
  const RestartForm flow{Layout::function, {}, true, Sections{{1, 5}, {6, 7}}};
  EXPECT_THAT(describe(flow), HasSubstr("layout 3, unformatted"));
  EXPECT_EQ(describe(*flow.sections), "1-5,6-7");
  EXPECT_EQ(variables_in(*flow.sections), 7);
  EXPECT_EQ(applied_to(RestartForm(), stated_as(flow)), flow);
  EXPECT_TRUE(is_complete(stated_as(flow)));
  EXPECT_FALSE(is_complete(StatedRestartForm{}));
  EXPECT_STREQ(name_of(Layout::single_block), "101");
  EXPECT_STREQ(name_of(false), "no");
  EXPECT_EQ(all_layouts().size(), layout_member.choices.size());
}

}  // namespace
}  // namespace p3dgrid
