#include "recordio/plain_block.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "recordio/list_tokens.hpp"
#include "recordio/plain_number.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Surroundings that parsers may read.
std::string with_margins(std::string_view text) {
  const std::string margin(64, ' ');
  return margin + std::string(text) + margin;
}
constexpr std::size_t margin = 64;

BlockCount count_in(std::string_view text, bool comma = true) {
  return count_plain(with_margins(text).data() + margin, comma);
}

bool is_plain(std::string_view word) {
  const std::string text = with_margins(word);
  const char* const from = text.data() + margin;
  return skip_plain<double>(from, text.data() + text.size()) == from + word.size();
}

/// The same for text that ends behind a number, number by number. None if one is not plain.
std::optional<BlockCount> count_one_by_one(std::string_view text, bool comma) {
  BlockCount count{.characters = static_cast<int>(text.size())};
  while (!text.empty()) {
    bool line_ended = false;
    for (; is_blank(text[0]) || (text[0] == ',' && comma && !line_ended); text.remove_prefix(1)) {
      if (text[0] == ',') comma = false;
      line_ended = line_ended || text[0] == '\n';
      count.line_ends += text[0] == '\n';
    }
    const auto* const end = std::ranges::find_if(text, ends_token);
    if (!is_plain({text.begin(), end})) return {};
    text = {end, text.end()};
    comma = true;
    ++count.numbers;
  }
  return count;
}

constexpr std::array<std::string_view, 14> usual{
    "0",     "12",  "+7.25",   "-.5",         "3.",    "1e5",  "1.5E-07",
    "2d+00", "4D9", "-1e-123", "0.020085534", "1.e+1", "-0.0", "1234567.8901234567"};
constexpr std::array<std::string_view, 36> unusual{"-.",
                                                   ".",
                                                   "-",
                                                   "+",
                                                   "e5",
                                                   "-e5",
                                                   ".e5",
                                                   "--1",
                                                   "+-1",
                                                   "1.2.3",
                                                   "1..2",
                                                   "1e",
                                                   "1e+",
                                                   "1e-.",
                                                   "1e5.",
                                                   "1e5e5",
                                                   "1ed5",
                                                   "1-5",
                                                   "1+5",
                                                   "1q5",
                                                   "1e1234",
                                                   "1e12345",
                                                   "2*3",
                                                   "2*",
                                                   "/",
                                                   "nan",
                                                   "-inf",
                                                   "0x1",
                                                   "1e-5x",
                                                   "1;2",
                                                   "1c5",
                                                   "1F5",
                                                   "1U5",
                                                   "1$5",
                                                   "123456789012345678",
                                                   "1234567890123456789"};
constexpr std::array<std::string_view, 12> separators{" ",  "\n",   ", ",  ",",  "   ", "\r\n",
                                                      "\t", "\n\n", ",\n", " ,", "\n,", ",,"};
constexpr std::string_view characters = "0123456789.+-eEdDqQ*/,' \n\t\r\v\f;:CFGc$";

class Pieces {
 public:
  template <class List>
  auto one_of(const List& list) {
    return list[std::uniform_int_distribution<std::size_t>(0, std::size(list) - 1)(random_)];
  }
  bool one_in(int count) { return std::uniform_int_distribution<int>(1, count)(random_) == 1; }

  /// A block of words and separators. One in `regular` is not a usual one.
  std::string block(int regular) {
    std::string text;
    if (one_in(2)) text += one_of(separators);
    while (std::ssize(text) < block_characters) {
      if (one_in(4 * regular)) text += one_of(characters);
      text += one_in(regular) ? one_of(unusual) : one_of(usual);
      text += one_in(regular) ? one_of(separators) : separators[one_in(8) ? 1 : 0];
    }
    return text;
  }

 private:
  std::mt19937 random_{5};
};

TEST(PlainBlock, CountsWhatTheParserOfSingleNumbersAccepts) {
  Pieces pieces;
  int accepted = 0;
  constexpr int blocks = 200'000;
  for (int n = 0; n < blocks; ++n) {
    const std::string text = pieces.block(n % 40 + 1);
    const bool comma = pieces.one_in(2);
    const BlockCount count = count_in(text, comma);
    if (count.numbers == 0) continue;
    ++accepted;
    const auto expected =
        count_one_by_one(text.substr(0, static_cast<std::size_t>(count.characters)), comma);
    ASSERT_TRUE(expected) << text;
    ASSERT_EQ(count.numbers, expected->numbers) << text;
    ASSERT_EQ(count.line_ends, expected->line_ends) << text;
  }
  EXPECT_GT(accepted, blocks / 4);
}

TEST(PlainBlock, CountsUsualNumbersAtEveryOffset) {
  for (const std::string_view number : usual) {
    for (int offset = 0; offset + std::ssize(number) < block_characters; ++offset) {
      const std::string before(static_cast<std::size_t>(offset), ' ');
      const BlockCount count = count_in(before + std::string(number) + "\n");
      EXPECT_EQ(count.numbers, 1) << number << " at " << offset;
      EXPECT_EQ(count.characters, offset + std::ssize(number)) << number;
      EXPECT_EQ(count.line_ends, 0);
    }
  }
}

TEST(PlainBlock, RefusesUnusualWordsAtEveryOffset) {
  for (const std::string_view word : unusual) {
    if (word == "123456789012345678") continue;  // has as many digits as fit
    for (int offset = 2; offset + std::ssize(word) < block_characters; ++offset) {
      const std::string before(static_cast<std::size_t>(offset - 2), '\n');
      EXPECT_EQ(count_in(before + "1 " + std::string(word) + ' ').numbers, 0) << word;
      EXPECT_EQ(count_in(before + "1 " + std::string(word)).numbers > 0,
                offset + std::ssize(word) == block_characters);
    }
  }
}

TEST(PlainBlock, LeavesTheWordThatTheBlockDoesNotEnd) {
  const std::string digits(62, '1');
  EXPECT_EQ(count_in("1 " + digits).characters, 1);
  EXPECT_EQ(count_in("1 1x" + digits).characters, 1);
  EXPECT_EQ(count_in("11" + digits).numbers, 0);
  EXPECT_EQ(count_in(std::string(64, ' ')).numbers, 0);
}

TEST(PlainBlock, AcceptsACommaBehindEachNumber) {
  EXPECT_EQ(count_in("1,2, 3,\n4\n").numbers, 4);
  EXPECT_EQ(count_in(",1 2 ", true).numbers, 2);
  EXPECT_EQ(count_in(",1 2 ", false).numbers, 0);
  EXPECT_EQ(count_in("1\n,2 ").numbers, 0);
  EXPECT_EQ(count_in("1,,2 ").numbers, 0);
}

TEST(PlainBlock, AcceptsTabsAndCarriageReturns) {
  EXPECT_EQ(count_in("\t1\t2\r\n3 \r\n").numbers, 3);
}

TEST(PlainBlock, CountsLineEndsBetweenNumbersOnly) {
  const BlockCount count = count_in("\n1 2\n\n3\n\n");
  EXPECT_EQ(count.numbers, 3);
  EXPECT_EQ(count.line_ends, 3);
  EXPECT_EQ(count.characters, 7);
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
