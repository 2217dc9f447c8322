#include "recordio/characters.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace mod_p3dgrid::recordio {
namespace {

std::uint64_t power_of_ten(std::int64_t exponent) {
  return exponent == 0 ? 1 : 10 * power_of_ten(exponent - 1);
}

TEST(Characters, WordsEndAtTheFirstBlankControlCharacterOrComma) {
  for (const char end : {' ', '\n', '\t', '\r', '\0', '\x1f', ','}) {
    for (std::size_t place = 0; place < 32; ++place) {
      std::string text(32, '\x21');
      text[place] = end;
      text.replace(place + 1, text.npos, std::string(31 - place, ' '));
      EXPECT_EQ(end_of_word(text.data()), text.data() + place);
    }
  }
}

TEST(Characters, AllOthersBelongToTheWord) {
  for (int c = '!'; c < 256; ++c) {
    if (c == ',') continue;
    const std::string text(32, static_cast<char>(c));
    EXPECT_EQ(end_of_word(text.data()), nullptr) << c;
  }
}

TEST(Characters, TheLastDigitsMakeANumber) {
  const std::string text = "9876543210123456";
  for (std::int64_t count = 0; count <= characters_at_once; ++count) {
    std::uint64_t number = 1;
    ASSERT_TRUE(take_last_digits(text.data() + text.size(), count, number)) << count;
    EXPECT_EQ(number, 9'876'543'210'123'456 % power_of_ten(count));
  }
}

TEST(Characters, OnlyDigitsMakeANumberAndWhatIsInFrontDoesNotMatter) {
  for (std::size_t place = 0; place < characters_at_once; ++place) {
    for (const char other : {'/', ':', '.', ' ', '\0', '\x80', '\xff'}) {
      std::string text(characters_at_once, '7');
      text[place] = other;
      for (std::int64_t count = 0; count <= characters_at_once; ++count) {
        const bool counts = static_cast<std::int64_t>(place) >= characters_at_once - count;
        std::uint64_t number = 5;
        EXPECT_EQ(take_last_digits(text.data() + text.size(), count, number), !counts);
        EXPECT_EQ(number, counts ? 5 : power_of_ten(count) / 9 * 7);
      }
    }
  }
}

std::string text_of(const SixteenDigits& digits) {
  std::string text;
  for (const std::uint64_t eight : digits) {
    for (int i = 0; i < 8; ++i) text += static_cast<char>('0' + (eight >> 8 * i & 0xFF));
  }
  return text;
}

TEST(Characters, NumbersHaveTheirDigits) {
  std::mt19937_64 random(7);
  std::vector<std::uint64_t> numbers;
  for (std::int64_t exponent = 0; exponent <= 16; ++exponent) {
    const std::uint64_t power = power_of_ten(exponent);
    numbers.push_back(power - 1);
    if (exponent < 16) numbers.push_back(power);
  }
  for (std::uint64_t n = 0; n < 10'000; ++n) {
    numbers.push_back(n * 100'010'001 % power_of_ten(12) * 10'000 + n);
    numbers.push_back(random() % power_of_ten(16));
  }
  for (const std::uint64_t number : numbers) {
    const std::string digits = std::to_string(number);
    const std::string expected = std::string(16 - digits.size(), '0') + digits;
    ASSERT_EQ(text_of(sixteen_digits(number)), expected);
    ASSERT_EQ(text_of(detail::digits_eight_by_eight(number)), expected);
  }
}

TEST(Characters, ProcessorsWithoutWideRegistersFindTheSame) {
  std::mt19937 random(5);
  for (int n = 0; n < 10'000; ++n) {
    Characters digits{};
    for (int i = 0; i < characters_at_once; ++i)
      digits[i] = static_cast<unsigned char>(random() % 10);
    EXPECT_EQ(detail::number_one_by_one(digits), number_of(digits));
    EXPECT_EQ(detail::bits_one_by_one(digits > 4), bits_of(digits > 4));
  }
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
