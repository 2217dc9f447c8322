#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <string>
#include <vector>

#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"
#include "support/unit.hpp"

namespace mod_p3dgrid::recordio {
namespace {

using test_support::Unit;

using Reals = std::vector<float>;
using Integers = std::vector<integer>;

/// Reads text that stands in a file of its own.
class ListDirectedText : public test_support::InScratchFolder {
 protected:
  static const Unit& unit() {
    static const Unit text(13, 1);
    return text;
  }

  void given(const std::string& text) {
    test_support::write_file("text", text);
    unit().open("text", OpenStatus::old);
  }

  /// The next read of four reals over -1 -2 -3 -4; empty if it failed.
  Reals four() {
    Reals into{-1, -2, -3, -4};
    return unit().read({values(into.data(), 4)}) ? into : Reals{};
  }

  /// The text is read twice: at the end of the file, where numbers may still be growing, and with
  /// more text behind it, where they are read without a copy. Both must agree.
  Reals four_of(const std::string& text) {
    given(text + "\n" + std::string(200, ' ') + "\n");
    const Reals inside = four();
    const ReadFailure failure = p3dlastfailure();
    given(text);
    const Reals at_end = four();
    EXPECT_EQ(at_end, inside) << text;
    if (at_end.empty()) {
      EXPECT_EQ(p3dlastfailure().status, failure.status) << text;
      EXPECT_EQ(p3dlastfailure().found, failure.found) << text;
    }
    return at_end;
  }
};

TEST_F(ListDirectedText, ValuesAreSeparatedByBlanksTabsCommasAndLineEnds) {
  const Reals expected{1, 2, 3, 4};
  for (const char* text :
       {"1 2 3 4\n", "1,2,3,4\n", "1\t2\t3\t4\n", "1\n2\n3\n4\n", "  1  ,  2 ,3\n,4\n",
        "\n\n1 2\n\n 3,\n\n4\n", "1 2 3 4", "1\r\n2\r\n3 4\r\n", "1,\t2\r\n,3,4\r\n"}) {
    EXPECT_EQ(four_of(text), expected) << text;
  }
}

TEST_F(ListDirectedText, RepeatCountsStandAnywhere) {
  EXPECT_EQ(four_of("4*7\n"), (Reals{7, 7, 7, 7}));
  EXPECT_EQ(four_of("1 2*-.5, 3\n"), (Reals{1, -.5, -.5, 3}));
  EXPECT_EQ(four_of("2*1\n2*2"), (Reals{1, 1, 2, 2}));
  EXPECT_EQ(four_of("1 9*2.5D0 \n"), (Reals{1, 2.5, 2.5, 2.5}));
}

TEST_F(ListDirectedText, RepeatsGoOnAcrossTheEntriesOfOneReadAndEndWithIt) {
  given("6*3\n9 9 9 9\n");
  std::array<float, 3> reals{};
  std::array<integer, 2> integers{};
  ASSERT_TRUE(unit().read({values(reals.data(), 3), values(integers.data(), 2)}));
  EXPECT_EQ(reals, (std::array<float, 3>{3, 3, 3}));
  EXPECT_EQ(integers, (std::array<integer, 2>{3, 3}));
  EXPECT_EQ(four(), (Reals{9, 9, 9, 9}));
}

TEST_F(ListDirectedText, NullValuesLeaveTheDestinationAsItIs) {
  EXPECT_EQ(four_of(",,,9\n"), (Reals{-1, -2, -3, 9}));
  EXPECT_EQ(four_of("1,,3,4\n"), (Reals{1, -2, 3, 4}));
  EXPECT_EQ(four_of("1,\n,3,4\n"), (Reals{1, -2, 3, 4}));
  EXPECT_EQ(four_of("1 2* 4\n"), (Reals{1, -2, -3, 4}));
  EXPECT_EQ(four_of("1,2*,4\n"), (Reals{1, -2, -3, 4}));
  EXPECT_EQ(four_of("5*\n"), (Reals{-1, -2, -3, -4}));
  EXPECT_EQ(four_of("1 3*"), (Reals{1, -2, -3, -4}));
  EXPECT_EQ(four_of("1 2 3,,"), (Reals{1, 2, 3, -4}));
}

TEST_F(ListDirectedText, SlashEndsTheReadAndItsLine) {
  EXPECT_EQ(four_of("1 2/3 4\n5 6 7 8\n"), (Reals{1, 2, -3, -4}));
  EXPECT_EQ(four(), (Reals{5, 6, 7, 8}));
  EXPECT_EQ(four_of("1 2 3 4/5\n"), (Reals{1, 2, 3, 4}));
  EXPECT_EQ(four_of("/"), (Reals{-1, -2, -3, -4}));
  EXPECT_EQ(four_of("1,2,\n/\n"), (Reals{1, 2, -3, -4}));
}

TEST_F(ListDirectedText, EachReadBeginsOnANewLine) {
  given("1 2 3 4 5 6\n5 6 7 8 rest of the line\n9 10 11\n12 13\n1 2 3 4");
  EXPECT_EQ(four(), (Reals{1, 2, 3, 4}));
  EXPECT_EQ(four(), (Reals{5, 6, 7, 8}));
  EXPECT_EQ(four(), (Reals{9, 10, 11, 12}));
  EXPECT_EQ(four(), (Reals{1, 2, 3, 4}));
  EXPECT_EQ(four(), Reals{});
  EXPECT_EQ(p3dlastfailure().status, -1);
}

TEST_F(ListDirectedText, AReadOfNothingConsumesOneLine) {
  given("skipped\n1 2 3 4\n");
  EXPECT_TRUE(unit().read({}));
  EXPECT_EQ(four(), (Reals{1, 2, 3, 4}));
  EXPECT_FALSE(unit().read({}));
  EXPECT_EQ(p3dlastfailure().status, -1);
}

TEST_F(ListDirectedText, DroppedValuesAreCheckedAllTheSame) {
  given("1 2*3 x 5\n");
  float last = 0;
  EXPECT_FALSE(unit().read({dropped(FileKind::real4, 4), scalar(last)}));
  EXPECT_EQ(p3dlastfailure().found, "\"x\"");
  given("1 2*3 4,, 5\n");
  EXPECT_TRUE(unit().read({dropped(FileKind::real4, 5), scalar(last)}));
  EXPECT_EQ(last, 5);
}

TEST_F(ListDirectedText, LinesOfAnArrayAreFilledOneAfterAnother) {
  given("1 2 3 4 5 6\n");
  Reals array(8, -1);
  ASSERT_TRUE(unit().read({lines(array.data(), 2, 2, 3)}));
  EXPECT_EQ(array, (Reals{1, 4, 2, 5, 3, 6, -1, -1}));
}

TEST_F(ListDirectedText, ErrorsNameLineTokenAndExpectation) {
  given("1 2\n3 4\n\n5 six\n");
  Reals into(6);
  ASSERT_FALSE(unit().read({values(into.data(), 6)}));
  const ReadFailure& failure = p3dlastfailure();
  EXPECT_EQ(failure.file, "text");
  EXPECT_EQ(failure.unit, 13);
  EXPECT_GT(failure.status, 0);
  EXPECT_EQ(failure.line, 4);
  EXPECT_EQ(failure.describe(), "text: line 4: found \"six\", expected a real number");
  EXPECT_EQ(into[4], 5);
}

TEST_F(ListDirectedText, TokensThatAreNotWhollyNumbersAreErrors) {
  for (const char* text : {"1 2 3 4x\n", "1 2;3 4\n", "1 2 'a' 4\n", "0*1 2 3 4\n", "-2*1 3 4\n",
                           "2*3*4 1\n", "x*1 2 3\n", "1 2 T 4\n", "99999999999999999999*1\n"}) {
    EXPECT_EQ(four_of(text), Reals{}) << text;
    EXPECT_GT(p3dlastfailure().status, 0) << text;
  }
  given("2147483648\n");
  integer number = 0;
  EXPECT_FALSE(unit().read({scalar(number)}));
  given("1.0\n");
  EXPECT_FALSE(unit().read({scalar(number)}));
}

TEST_F(ListDirectedText, TooFewValuesAreTheEndOfTheFile) {
  EXPECT_EQ(four_of("1 2 3\n"), Reals{});
  EXPECT_EQ(p3dlastfailure().status, -1);
  EXPECT_EQ(four_of("1 2 3,\n \n"), Reals{});
  EXPECT_EQ(p3dlastfailure().status, -1);
  EXPECT_EQ(four_of(""), Reals{});
  EXPECT_EQ(p3dlastfailure().status, -1);
}

TEST_F(ListDirectedText, ATokenWithoutEndIsRefusedAndNotCollected) {
  EXPECT_EQ(four_of(std::string(3'000'000, '1')), Reals{});
  EXPECT_GT(p3dlastfailure().status, 0);
  EXPECT_LT(p3dlastfailure().found.size(), 60u);
}

/// The same values, whatever piece of the text the end of the reader's buffer falls on.
TEST_F(ListDirectedText, ReadsTheSameAcrossTheEdgesOfItsBuffer) {
  constexpr std::size_t buffer = 256 * 1024;
  for (std::size_t shift = 0; shift < 80; ++shift) {
    const std::string text = std::string(buffer - 40 - shift % 40, ' ') +
                             std::string(shift / 40, '\n') +
                             "1.25 , 2*3.5D+00,,\t-4e-2\r\n 17 +.5\n";
    given(text);
    Reals into{-1, -2, -3, -4, -5, -6, -7};
    ASSERT_TRUE(unit().read({values(into.data(), 7)})) << shift;
    EXPECT_EQ(into, (Reals{1.25, 3.5, 3.5, -4, -.04F, 17, .5})) << shift;
  }
}

TEST_F(ListDirectedText, LinesAreCountedAlikeWhereverTheNumbersStand) {
  given("1\n2\n\n3 4\n" + std::string(100, ' ') + "\n5 6 7\nx 1 1 1\n" + std::string(100, '\n'));
  EXPECT_EQ(four(), (Reals{1, 2, 3, 4}));
  EXPECT_EQ(four(), Reals{});
  EXPECT_EQ(p3dlastfailure().line, 7);
}

TEST_F(ListDirectedText, ACommaAtTheStartIsANullValueWhereverTheNumbersStand) {
  given(",2,3,4\n" + std::string(100, ' '));
  EXPECT_EQ(four(), (Reals{-1, 2, 3, 4}));
}

TEST_F(ListDirectedText, LongNumbersAreReadAlikeWhereverTheyStand) {
  for (const std::size_t length : {3000U, 5000U, 1'000'000U}) {
    const std::string zeros(length, '0');
    EXPECT_EQ(four_of("1." + zeros + " 2 3 4"), (Reals{1, 2, 3, 4}));
    EXPECT_EQ(four_of(zeros + "1 2 3 " + zeros + "4e0"), (Reals{1, 2, 3, 4}));
  }
}

TEST_F(ListDirectedText, AWordWithoutEndIsNoNumber) {
  EXPECT_EQ(four_of("1." + std::string(1 << 21, '0') + " 2 3 4"), Reals{});
  EXPECT_EQ(p3dlastfailure().found, "a word of more than 1048576 characters");
}

TEST_F(ListDirectedText, ANaNKeepsItsBitsWhereverItStands) {
  for (const char* text : {"NaN(ffc00001) 2 3 4", "-nan(7fc00001) 2 3 4"}) {
    for (const std::string& behind : {std::string(), std::string(200, ' ')}) {
      given(text + behind);
      const Reals got = four();
      ASSERT_EQ(got.size(), 4u);
      EXPECT_EQ(std::bit_cast<std::uint32_t>(got[0]) & 0xFFFFFU, 1U);
    }
  }
}

TEST_F(ListDirectedText, AWholeBlockMayStandOnOneLine) {
  std::string text;
  for (int i = 0; i < 200'000; ++i) text += ' ' + std::to_string(i);
  given(text + "\n1 2 3 4\n");
  Integers into(200'000);
  ASSERT_TRUE(unit().read({values(into.data(), 200'000)}));
  for (int i = 0; i < 200'000; ++i) ASSERT_EQ(into[static_cast<std::size_t>(i)], i);
  EXPECT_EQ(four(), (Reals{1, 2, 3, 4}));
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
