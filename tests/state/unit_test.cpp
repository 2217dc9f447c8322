#include "support/unit.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <thread>
#include <vector>

#include "recordio/unformatted_record.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

namespace mod_p3dgrid::recordio {
namespace {

using test_support::Bytes;
using test_support::read_file;
using test_support::RunEnded;
using test_support::Unit;
using test_support::write_file;

class Units : public test_support::InScratchFolder {};
class UnformattedRecords : public test_support::InScratchFolder {
 protected:
  Unit unit{13, 0};
  void given(const Bytes& bytes) {
    write_file("file", bytes);
    unit.open("file", OpenStatus::old);
  }
};

TEST_F(UnformattedRecords, AreFramedByTheirLength) {
  unit.open("file", OpenStatus::unknown);
  const std::array<integer, 2> numbers{7, -1};
  const double real = 0.5;
  unit.write({values(numbers.data(), 2), scalar(real)});
  unit.write({});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().i4(16).i4s({7, -1}).r8(.5).i4(16).i4(0).i4(0).str());
}

TEST_F(UnformattedRecords, ShorterListsSkipTheRestOfTheRecord) {
  given(Bytes().record(Bytes().i4s({1, 2, 3})).record(Bytes().i4(4)));
  integer number = 0;
  ASSERT_TRUE(unit.read({scalar(number)}));
  EXPECT_EQ(number, 1);
  ASSERT_TRUE(unit.read({scalar(number)}));
  EXPECT_EQ(number, 4);
}

TEST_F(UnformattedRecords, ShorterListsAreAnErrorWhereWholeRecordsAreWanted) {
  p3dsetwholerecords(true);
  given(Bytes().record(Bytes().i4s({1, 2, 3})).record(Bytes().i4(4)));
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(number, 1);
  EXPECT_GT(p3dlastfailure().status, 0);
  EXPECT_EQ(p3dlastfailure().describe(),
            "file: record 1, byte 8: found a record of 12 bytes, expected one of 4");
  std::array<integer, 3> numbers{};
  given(Bytes().record(Bytes().i4s({1, 2, 3})).record(Bytes()).record(Bytes().i4(4)));
  EXPECT_TRUE(unit.read({values(numbers.data(), 3)}));
  EXPECT_TRUE(unit.read({}));
  p3dsetwholerecords(false);
  EXPECT_TRUE(unit.read({}));
}

TEST_F(UnformattedRecords, SplitOnesAreMeasuredAsAWhole) {
  p3dsetwholerecords(true);
  integer number = 0;
  for (const auto& [split, length] :
       {std::pair{Bytes().i4s({-4, 1, 4, -8, 2, 3, -8, 4, 4, -4}), "16"},
        {Bytes().i4s({-8, 1, 2, 8, 4, 3, -4}), "12"},
        {Bytes().i4s({-8, 1, 2, 8, 0, 0}), "8"}}) {
    given(split);
    EXPECT_FALSE(unit.read({scalar(number)}));
    EXPECT_EQ(p3dlastfailure().found, std::string("a record of ") + length + " bytes");
    EXPECT_EQ(p3dlastfailure().expected, "one of 4");
    EXPECT_EQ(p3dlastfailure().offset, 8);
  }
  given(Bytes().i4s({-4, 1, 4, 0, 0}));  // nothing is left in the last piece
  EXPECT_TRUE(unit.read({scalar(number)}));
  given(Bytes().i4s({-4, 1, 4, 4, 2}));
  EXPECT_FALSE(unit.read({scalar(number)}));
}

TEST_F(Units, WholeRecordsAreAskedOfUnformattedFilesOnly) {
  p3dsetwholerecords(true);
  integer number = 0;
  write_file("text", std::string("1 2 3\n4\n"));
  const Unit text(13, 1);
  text.open("text", OpenStatus::old);
  EXPECT_TRUE(text.read({scalar(number)}));
  EXPECT_TRUE(text.read({scalar(number)}));
  EXPECT_EQ(number, 4);
  write_file("binary", Bytes().i4s({1, 2}));
  const Unit binary(13, 2);
  binary.open("binary", OpenStatus::old);
  EXPECT_TRUE(binary.read({scalar(number)}));
}

TEST_F(Units, AFailureCanBeForgotten) {
  const Unit unit(13, 0);
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_NE(p3dlastfailure().status, 0);
  p3dclearfailure();
  EXPECT_EQ(p3dlastfailure().status, 0);
  EXPECT_EQ(p3dlastfailure().file, "");
  EXPECT_EQ(p3dlastfailure().unit, 0);
  EXPECT_EQ(p3dlastfailure().found, "");
}

TEST_F(UnformattedRecords, LongerListsAreAnError) {
  given(Bytes().record(Bytes().i4s({1, 2})).record(Bytes().i4(4)));
  std::array<integer, 3> numbers{};
  EXPECT_FALSE(unit.read({values(numbers.data(), 3)}));
  EXPECT_GT(p3dlastfailure().status, 0);
  EXPECT_EQ(p3dlastfailure().describe(),
            "file: record 1, byte 12: found the end of a record of 8 bytes, expected 4 more bytes "
            "in it");
}

TEST_F(UnformattedRecords, FailuresShowControlCharactersOfTheirFileEscaped) {
  write_file("a\n\x1b[2Jb", Bytes().i4(4));
  unit.open("a\n\x1b[2Jb", OpenStatus::old);
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().file, "a\n\x1b[2Jb");
  EXPECT_EQ(p3dlastfailure().describe(),
            R"(a\n\x1b[2Jb: record 1, byte 4: found the end of the file, expected 4 more bytes)");
}

TEST_F(UnformattedRecords, MarkersMustAgree) {
  given(Bytes().i4(4).i4(1).i4(5));
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().describe(),
            "file: record 1, byte 8: found the marker 5 behind a record, expected 4 as before it");
  given(Bytes().i4(4).i4(1).i4(-4));
  EXPECT_FALSE(unit.read({scalar(number)}));
  given(Bytes().i4(std::numeric_limits<integer>::min()).i4(1).i4(4));
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().expected, "a record length");
}

TEST_F(UnformattedRecords, EndOfFileBetweenRecordsAndInsideThemIsTold) {
  given(Bytes());
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().status, -1);
  const std::string whole = Bytes().record(Bytes().i4(1)).str();
  for (std::size_t length = 1; length < whole.size(); ++length) {
    write_file("file", whole.substr(0, length));
    unit.open("file", OpenStatus::old);
    EXPECT_FALSE(unit.read({scalar(number)})) << length;
    EXPECT_EQ(p3dlastfailure().status, -1) << length;
  }
}

TEST_F(UnformattedRecords, LeaveAValueAloneThatIsThereInPart) {
  std::array<double, 2> numbers{-1, -2};
  integer number = -3;
  const std::string whole = Bytes().record(Bytes().r8s({.5, .25}).i4(7)).str();
  for (std::size_t payload = 0; payload < 20; ++payload) {
    numbers = {-1, -2};
    number = -3;
    write_file("file", whole.substr(0, 4 + payload));
    unit.open("file", OpenStatus::old);
    EXPECT_FALSE(unit.read({values(numbers.data(), 2), scalar(number)})) << payload;
    EXPECT_EQ(numbers[0], payload < 8 ? -1 : .5) << payload;
    EXPECT_EQ(numbers[1], payload < 16 ? -2 : .25) << payload;
    EXPECT_EQ(number, -3) << payload;
  }
}

TEST_F(UnformattedRecords, TooLongForOneMarkerAreSplit) {
  set_subrecord_limit(8);
  unit.open("file", OpenStatus::unknown);
  const std::array<integer, 5> numbers{1, 2, 3, 4, 5};
  unit.write({values(numbers.data(), 5)});
  unit.write({values(numbers.data(), 2)});
  unit.write({values(numbers.data(), 4)});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes()
                                   .i4s({-8, 1, 2, 8, -8, 3, 4, -8, 4, 5, -4})
                                   .i4s({8, 1, 2, 8})
                                   .i4s({-8, 1, 2, 8, 8, 3, 4, -8})
                                   .str());
}

TEST_F(UnformattedRecords, SplitAnywhereReadTheSame) {
  std::vector<double> written{.5, -3, 7, 1e300};
  for (std::int64_t limit = 1; limit <= 40; ++limit) {
    set_subrecord_limit(limit);
    unit.open("file", OpenStatus::unknown);
    unit.write({values(std::as_const(written).data(), 4)});
    unit.write({scalar(std::as_const(written)[1])});
    unit.open("file", OpenStatus::old);
    std::array<double, 2> first_two{};
    double next = 0;
    ASSERT_TRUE(unit.read({values(first_two.data(), 2)})) << limit;
    ASSERT_TRUE(unit.read({scalar(next)})) << limit;
    EXPECT_EQ(first_two, (std::array<double, 2>{.5, -3}));
    EXPECT_EQ(next, -3);
  }
}

TEST_F(UnformattedRecords, MarkersOfSubRecordsAreChecked) {
  integer number = 0;
  std::array<integer, 3> numbers{};
  given(Bytes().i4s({-4, 1, 4, 4, 2, -4}));
  EXPECT_TRUE(unit.read({values(numbers.data(), 2)}));
  given(Bytes().i4s({-4, 1, 4, 4, 2, 4}));  // the last does not say that one came before
  EXPECT_FALSE(unit.read({scalar(number)}));
  given(Bytes().i4s({-4, 1, 8, 4, 2, -4}));
  EXPECT_FALSE(unit.read({values(numbers.data(), 2)}));
  given(Bytes().i4s({-4, 1, 4}));  // the announced one is missing
  EXPECT_FALSE(unit.read({scalar(number)}));
  given(Bytes().i4s({-4, 1, 4, 4, 2, -4}));
  EXPECT_FALSE(unit.read({values(numbers.data(), 3)}));
}

class WideMarkers : public UnformattedRecords {
 protected:
  static constexpr p3dgrid::StatedCoding wide{.marker_bytes = p3dgrid::MarkerBytes::eight};

  void SetUp() override {
    p3dsetcoding([](std::string_view) { return wide; });
  }
};

TEST_F(WideMarkers, FrameRecordsOfAnyLength) {
  set_subrecord_limit(8);
  unit.open("file", OpenStatus::unknown);
  const std::array<integer, 3> numbers{7, -1, 4};
  unit.write({values(numbers.data(), 3)});
  unit.write({});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().i8(12).i4s({7, -1, 4}).i8(12).i8(0).i8(0).str());
  unit.open("file", OpenStatus::old);
  std::array<integer, 3> again{};
  ASSERT_TRUE(unit.read({values(again.data(), 3)}));
  ASSERT_TRUE(unit.read({}));
  EXPECT_EQ(again, numbers);
}

TEST_F(WideMarkers, AreSwappedWithTheNumbers) {
  p3dsetcoding([](std::string_view) {
    p3dgrid::StatedCoding coding = wide;
    coding.byte_order =
        std::endian::native == std::endian::little ? std::endian::big : std::endian::little;
    return coding;
  });
  unit.open("file", OpenStatus::unknown);
  const integer one = 1;
  unit.write({scalar(one)});
  unit.close();
  const std::int64_t marker = __builtin_bswap64(4);
  EXPECT_EQ(read_file("file"), Bytes().i8(marker).i4(1 << 24).i8(marker).str());
}

TEST_F(WideMarkers, AreChecked) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  for (const std::int64_t marker : {std::int64_t{-4}, -most - 1, most, std::int64_t{1} << 40}) {
    integer number = 0;
    given(Bytes().i8(marker).i4s({1, 2}).i8(4));
    EXPECT_FALSE(unit.read({scalar(number)})) << marker;
  }
  given(Bytes().i8(-4).i4(1).i8(-4));
  integer number = 0;
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().describe(),
            "file: record 1, byte 0: found the marker -4, expected a record length");
  given(Bytes().i8(4).i4(1).i8(5));
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().describe(),
            "file: record 1, byte 12: found the marker 5 behind a record, expected 4 as before it");
  const std::string whole = Bytes().wide_record(Bytes().i4s({1, 2})).str();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    write_file("file", whole.substr(0, length));
    unit.open("file", OpenStatus::old);
    EXPECT_FALSE(unit.read({scalar(number)})) << length;
  }
}

TEST_F(Units, RealScalarsAreKeptInDoublePrecisionWhateverTheFileHolds) {
  const Unit unit(13, 2);
  const double written = 0.1;
  unit.open("file", OpenStatus::unknown);
  unit.write(
      {stored_as(FileKind::real4, scalar(written)), stored_as(FileKind::real8, scalar(written))});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().r4(.1F).r8(.1).str());
  unit.open("file", OpenStatus::old);
  double single = 0;
  double full = 0;
  ASSERT_TRUE(unit.read(
      {stored_as(FileKind::real4, scalar(single)), stored_as(FileKind::real8, scalar(full))}));
  EXPECT_EQ(single, static_cast<double>(.1F));
  EXPECT_EQ(full, .1);
}

TEST_F(Units, TextIsWrittenInLinesOfEightyColumnsThatBeginWithABlank) {
  const Unit unit(13, 1);
  std::vector<float> reals(3000);
  for (std::size_t i = 0; i < reals.size(); ++i) reals[i] = 1.0F / static_cast<float>(i + 3);
  unit.open("file", OpenStatus::unknown);
  unit.write({values(std::as_const(reals).data(), 3000)});
  unit.write({});
  unit.close();
  const std::string text = read_file("file");
  std::size_t begin = 0;
  std::size_t longest = 0;
  while (begin < text.size()) {
    const std::size_t end = text.find('\n', begin);
    ASSERT_NE(end, text.npos);
    EXPECT_EQ(text[begin], ' ');
    longest = std::max(longest, end - begin);
    begin = end + 1;
  }
  EXPECT_LE(longest, 80u);
  EXPECT_GE(longest, 70u);
  unit.open("file", OpenStatus::old);
  std::vector<float> back(3000);
  ASSERT_TRUE(unit.read({values(back.data(), 3000)}));
  EXPECT_EQ(back, reals);
  EXPECT_TRUE(unit.read({}));
}

TEST_F(Units, TextIsExactlyThisText) {
  const Unit unit(13, 1);
  const std::array<integer, 3> extents{2, 73, 45};
  const std::array<float, 4> array{1, 0.1F, -2.5e-7F, 3};
  unit.open("file", OpenStatus::unknown);
  unit.write({values(extents.data(), 3)});
  unit.write({lines(array.data(), 2, 2, 2)});
  unit.close();
  EXPECT_EQ(read_file("file"), " 2 73 45\n 1 -2.5e-07 0.1 3\n");
}

TEST_F(Units, OpeningAConnectedUnitClosesItFirstAndBeginsAtTheStart) {
  const Unit unit(13, 2);
  const integer one = 1;
  unit.open("first", OpenStatus::unknown);
  unit.write({scalar(one)});
  unit.open("second", OpenStatus::unknown);
  EXPECT_EQ(read_file("first"), Bytes().i4(1).str());
  unit.write({scalar(one)});
  unit.close();
  integer number = 0;
  for (int i = 0; i < 2; ++i) {
    unit.open("second", OpenStatus::old);
    EXPECT_TRUE(unit.read({scalar(number)}));
  }
}

TEST_F(Units, WritingToAFileThatIsReadIsAnErrorOfTheRun) {
  write_file("file", std::string("x"));
  const Unit unit(13, 0);
  unit.open("file", OpenStatus::old);
  EXPECT_THROW(unit.write({}), RunEnded);
}

TEST_F(Units, LongRestsOfARecordAreSkippedToTheRightPlace) {
  const Unit unit(13, 0);
  const std::vector<integer> much(200'000, 5);
  const integer next = 42;
  unit.open("file", OpenStatus::unknown);
  unit.write({values(much.data(), std::ssize(much))});
  unit.write({scalar(next)});
  unit.open("file", OpenStatus::old);
  integer number = 0;
  ASSERT_TRUE(unit.read({scalar(number)}));
  ASSERT_TRUE(unit.read({scalar(number)}));
  EXPECT_EQ(number, 42);
  EXPECT_FALSE(unit.read({scalar(number)}));
  EXPECT_EQ(p3dlastfailure().offset, 8 + 800'000 + 12);
}

/// Of 2^33 values, more than are trusted, a sixteenth will do for a file cut short: 2^29.
TEST_F(Units, TextMayHoldMoreValuesThanCharacters) {
  struct Text {
    const char* text;
    bool in_one_record;
    bool in_part;
  };
  constexpr std::int64_t many = std::int64_t{1} << 33;
  const Unit unit(13, 1);
  for (const auto& [text, in_one_record, in_part] :
       {Text{"1 2 3\n", false, false}, Text{"1 2 3 /\n", true, true}, Text{"/", true, true},
        Text{"8589934592*0", true, true}, Text{"1*2 536870912*", false, true},
        Text{"1 536870000*2 912*\n", false, true}, Text{"1 536870000*2 9*\n", false, false}}) {
    write_file("file", std::string(text));
    unit.open("file", OpenStatus::old);
    const auto can_hold = [&](Claim claim) { return unit.can_hold(many, FileKind::real4, claim); };
    EXPECT_EQ(can_hold(Claim::one_record), in_one_record) << text;
    EXPECT_EQ(can_hold(Claim::may_be_truncated), in_part) << text;
    EXPECT_FALSE(can_hold(Claim::records)) << text;
  }
}

TEST_F(Units, ListsOfLessThanNothingAreEmpty) {
  const Unit unit(13, 0);
  const float array[3]{};
  unit.open("file", OpenStatus::unknown);
  unit.write({lines(array, -1, 3, 1), values(array, -5)});
  unit.close();
  EXPECT_EQ(read_file("file"), Bytes().i4(0).i4(0).str());
}

TEST_F(Units, ClosingAnUnconnectedUnitIsHarmless) {
  p3dcloseunit(13);
  p3dcloseunit(-5);
  Unit(594, 1).close();
}

TEST_F(Units, ClosedAndDeletedFilesAreGone) {
  const Unit unit(302, 0);
  write_file("file", std::string("x"));
  unit.open("file", OpenStatus::old);
  EXPECT_EQ(unit.close_and_delete(), "");
  EXPECT_FALSE(test_support::exists("file"));
  EXPECT_EQ(unit.close_and_delete(), "");
}

TEST_F(Units, FilesThatCannotBeDeletedSayWhy) {
  const Unit unit(302, 0);
  unit.open("/dev/null", OpenStatus::old);
  ASSERT_EQ(::mkdir("folder", 0700), 0);
  write_file("folder/file", std::string("x"));
  unit.open("folder/file", OpenStatus::old);
  ASSERT_EQ(::unlink("folder/file"), 0);
  ASSERT_EQ(::mkdir("folder/file", 0700), 0);
  EXPECT_EQ(unit.close_and_delete(), "cannot delete folder/file: Is a directory");
}

TEST_F(Units, LinksThatLeadNowhereAreNoFreeNames) {
  ASSERT_EQ(::symlink("nowhere", "link"), 0);
  EXPECT_TRUE(file_exists("link"));
  EXPECT_FALSE(file_exists("nowhere"));
}

TEST_F(Units, OneFileUnderTwoNamesIsTheSame) {
  write_file("a", std::string("x"));
  write_file("b", std::string("x"));
  ASSERT_EQ(::link("a", "c"), 0);
  EXPECT_TRUE(same_file("a", "c"));
  EXPECT_FALSE(same_file("a", "b"));
  EXPECT_FALSE(same_file("a", "missing"));
}

TEST_F(Units, AFileToWhichNothingIsWrittenStaysAsItWas) {
  for (const int iformat : {0, 1, 2}) {
    write_file("file", std::string("as it was"));
    const Unit unit(13, iformat);
    unit.open("file", OpenStatus::unknown);
    unit.close();
    EXPECT_EQ(read_file("file"), "as it was");
    unit.open("file", OpenStatus::unknown);
    unit.open("other", OpenStatus::unknown);
    EXPECT_EQ(read_file("file"), "as it was");
    unit.close();
    EXPECT_EQ(read_file("other"), "");
  }
}

TEST_F(Units, ARecordWithoutValuesIsWrittenLikeAnyOther) {
  for (const auto& [iformat, record] : {std::pair{0, std::string(8, '\0')}, {1, " \n"}, {2, ""}}) {
    write_file("file", std::string("as it was"));
    const Unit unit(13, iformat);
    unit.open("file", OpenStatus::unknown);
    unit.write({});
    unit.close();
    EXPECT_EQ(read_file("file"), record);
  }
}

TEST_F(Units, OfAnUnknownFormDoNothing) {
  const Unit unit(13, 3);
  unit.open("nowhere/at/all", OpenStatus::unknown);
  unit.write({});
  EXPECT_TRUE(unit.read({}));
  EXPECT_FALSE(unit.known());
}

void expect_run_ends(const std::string& message, const std::function<void()>& action) {
  try {
    action();
    FAIL() << "the run goes on: " << message;
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(std::string(end.what()), message);
  }
}

TEST_F(Units, FilesThatCannotBeOpenedAreErrorsOfTheRun) {
  const Unit unit(13, 0);
  expect_run_ends("cannot open missing: No such file or directory",
                  [&] { unit.open("missing", OpenStatus::old); });
  expect_run_ends("cannot open .: Is a directory", [&] { unit.open(".", OpenStatus::old); });
  expect_run_ends("cannot create no/folder: No such file or directory",
                  [&] { unit.open("no/folder", OpenStatus::unknown); });
  write_file("there", std::string("kept"));
  expect_run_ends("cannot create there: File exists",
                  [&] { unit.open("there", OpenStatus::fresh); });
  EXPECT_EQ(read_file("there"), "kept");
}

TEST_F(Units, UnreadableFilesAreErrorsOfTheRun) {
  write_file("secret", std::string("x"));
  ASSERT_EQ(::chmod("secret", 0), 0);
  ASSERT_EQ(::chmod(".", 0755), 0);
  const uid_t user = ::geteuid();
  constexpr uid_t somebody = 65534;
  if (user == 0) {  // for the superuser every file is readable
    ASSERT_EQ(::seteuid(somebody), 0);
  }
  expect_run_ends("cannot open secret: Permission denied",
                  [] { Unit(13, 0).open("secret", OpenStatus::old); });
  ASSERT_EQ(::seteuid(user), 0);
}

TEST_F(Units, WritesThatFailAreErrorsOfTheRunOnce) {
  const Unit unit(13, 2);
  const std::vector<float> much(1 << 20);
  unit.open("/dev/full", OpenStatus::unknown);
  expect_run_ends("cannot write /dev/full: No space left on device",
                  [&] { unit.write({values(much.data(), 1 << 20)}); });
  unit.close();  // has nothing left to complain about
}

TEST_F(Units, AWriteThatFailsOnlyAtTheCloseIsAnErrorOfTheRun) {
  const Unit unit(13, 2);
  const integer one = 1;
  unit.open("/dev/full", OpenStatus::unknown);
  unit.write({scalar(one)});
  expect_run_ends("cannot write /dev/full: No space left on device", [&] { unit.close(); });
}

TEST_F(Units, ReadFromAPipeAsFromAFile) {
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  const std::string bytes =
      Bytes().record(Bytes().i4s({1, 2, 3})).record(Bytes().r4s({.5F, .25F})).str();
  std::thread writer([&] { write_file("pipe", bytes); });
  const Unit unit(13, 0);
  unit.open("pipe", OpenStatus::old);
  integer number = 0;
  std::array<float, 2> reals{};
  EXPECT_TRUE(unit.read({scalar(number)}));
  EXPECT_TRUE(unit.read({values(reals.data(), 2)}));
  writer.join();
  EXPECT_EQ(number, 1);
  EXPECT_EQ(reals, (std::array<float, 2>{.5, .25}));
}

TEST_F(Units, NamesGoThroughTheHostsPaths) {
  p3dsetpaths([](std::string_view name) { return "a-much-longer-path-to-" + std::string(name); });
  const Unit unit(13, 2);
  const integer one = 1;
  unit.open("x", OpenStatus::unknown);
  unit.write({scalar(one)});
  unit.close();
  EXPECT_TRUE(test_support::exists("a-much-longer-path-to-x"));
  EXPECT_TRUE(file_exists("x"));
  EXPECT_FALSE(file_exists("a-much-longer-path-to-x"));
  expect_run_ends("cannot open a-much-longer-path-to-y: No such file or directory",
                  [&] { unit.open("y", OpenStatus::old); });
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
