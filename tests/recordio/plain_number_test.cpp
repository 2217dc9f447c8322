#include "recordio/plain_number.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "recordio/number_text.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Text with room around it, as in a file's buffer.
struct Text {
  static constexpr std::size_t room = 32;
  explicit Text(const std::string& token)
      : content(std::string(room, '9') + token + " " + std::string(room, '\0')),
        length(token.size() + 1) {}
  [[nodiscard]] const char* begin() const { return content.data() + room; }
  [[nodiscard]] const char* end() const { return begin() + length; }
  std::string content;
  std::size_t length;
};

/// The fast path either leaves the token alone or finds all of it and the value of the slow one.
/// Returns whether it took it.
template <class Real>
bool agrees_with_slow_path(const std::string& token) {
  const Text text(token);
  Real fast = -7;
  const char* const stop = parse_plain(text.begin(), text.end(), fast);
  if (stop == nullptr || *stop != ' ') return false;
  EXPECT_EQ(stop - text.begin(), std::ssize(token)) << token;
  Real slow = -7;
  EXPECT_TRUE(parse_number(token, slow)) << token;
  EXPECT_EQ(std::signbit(fast), std::signbit(slow)) << token;
  EXPECT_EQ(fast, slow) << token;
  return true;
}

TEST(PlainNumber, UsualFormsAreTaken) {
  std::istringstream tokens(
      "0 -0.0 1 +1 -1. .5 -.5e1 0.12345678E+00 -1.2345678D-05 1.5q3 123456789 0.000001 007 1.e1 "
      "12345678.12345678 1e-10 9.99999999e+9 0.1234567890123456 0.12345678901234567 "
      "123456.789012345678 -12345678901234567.8 1.5D-05 1.5d+05 1.5D5 0.5E-003 +0.25Q+0010");
  for (std::string token; tokens >> token;) {
    EXPECT_TRUE(agrees_with_slow_path<float>(token)) << token;
    EXPECT_TRUE(agrees_with_slow_path<double>(token)) << token;
  }
}

TEST(PlainNumber, OtherFormsAreLeftAlone) {
  for (const char* token : {"",          "-",
                            "+",         ".",
                            "e5",        "1e",
                            "1e+",       "1.5+3",
                            "1*2",       "2*",
                            "nan",       "-inf",
                            "x",         "1x",
                            "1.2.3",     "--1",
                            "0x10",      "1e99999",
                            "1d400",     "1.5e+-3",
                            "1.5e3e3",   "1.5e3.0",
                            "1:5",       "1.2:3",
                            "1.2/3e+05", "0.123456789012345678901234567890123456789d0"}) {
    EXPECT_FALSE(agrees_with_slow_path<float>(token)) << token;
    EXPECT_FALSE(agrees_with_slow_path<double>(token)) << token;
  }
}

TEST(PlainNumber, NumbersEndAtBlanksControlCharactersAndCommas) {
  for (const char behind : {' ', '\t', '\r', '\n', ',', '\0', '\v'}) {
    const Text text(std::string("-0.25E+01") + behind + "5");
    float value = 0;
    EXPECT_EQ(parse_plain(text.begin(), text.end(), value), text.begin() + 9) << behind;
    EXPECT_EQ(value, -2.5F) << behind;
  }
}

/// What looks like an exponent, or like its beginning, but stands in front of the number.
TEST(PlainNumber, NothingInFrontBelongsToTheNumber) {
  for (const char* front : {"1E", "1.5D+", "2q-", "1E+0", "1.5d-00", "E", "7."}) {
    for (const char* token : {"5", "05", "+05", "-5", "005", "1.5", "2E5"}) {
      const Text text(std::string(front) + token);
      const char* const begin = text.begin() + std::string(front).size();
      double value = 0;
      double expected = 0;
      ASSERT_TRUE(parse_number(token, expected));
      const char* const stop = parse_plain(begin, text.end(), value);
      if (stop == nullptr) continue;  // left to `parse_number`
      EXPECT_EQ(stop, text.end() - 1) << front << token;
      EXPECT_EQ(value, expected) << front << token;
      EXPECT_TRUE(skip_plain<double>(begin, text.end()) == nullptr ||
                  skip_plain<double>(begin, text.end()) == stop);
    }
    const Text nothing(front);
    double value = 0;
    EXPECT_EQ(parse_plain(nothing.end() - 1, nothing.end(), value), nullptr) << front;
    EXPECT_EQ(skip_plain<double>(nothing.end() - 1, nothing.end()), nullptr) << front;
  }
}

TEST(PlainNumber, NumbersOfAnyLengthAreReadWholeOrLeftAlone) {
  int taken = 0;
  for (std::size_t length = 1; length < 80; ++length) {
    for (const char* behind : {"", "5", ".5", "e1", "e-1", "d1"}) {
      const std::string token = std::string(length, '0') + "7" + behind;
      const Text text(token);
      double value = 0;
      double expected = 0;
      ASSERT_TRUE(parse_number(token, expected));
      const char* const stop = parse_plain(text.begin(), text.end(), value);
      if (stop == nullptr || *stop != ' ') continue;
      EXPECT_EQ(stop, text.end() - 1) << token;
      EXPECT_EQ(value, expected) << token;
      ++taken;
    }
  }
  EXPECT_GT(taken, 200);
}

TEST(PlainNumber, DroppedNumbersEndWhereReadOnesDo) {
  for (const char* token : {"0", "-1.", "+.5", "0.12345678E+00", "-1.2345678D-05", "1e9999"}) {
    const Text text(token);
    const char* const stop = skip_plain<float>(text.begin(), text.end());
    ASSERT_NE(stop, nullptr) << token;
    EXPECT_EQ(stop - text.begin(), std::ssize(std::string(token)));
  }
  for (const char* token : {"", "-", ".", "1e", "nan", "x"}) {
    const Text text(token);
    EXPECT_EQ(skip_plain<float>(text.begin(), text.end()), nullptr) << token;
  }
  const Text number("-12");
  EXPECT_EQ(skip_plain<integer>(number.begin(), number.end()), number.begin() + 3);
}

std::string random_token(std::mt19937_64& random) {
  std::string token = random() % 2 == 0 ? "-" : random() % 4 == 0 ? "+" : "";
  const auto digits = [&](std::uint64_t count) {
    for (; count > 0; --count) token += static_cast<char>('0' + random() % 10);
  };
  digits(random() % 9);
  if (random() % 8 != 0) token += '.';
  digits(1 + random() % (random() % 4 == 0 ? 20 : 11));
  if (random() % 2 == 0) return token;
  token += "eEdDqQ"[random() % 6];
  if (random() % 2 == 0) token += "+-"[random() % 2];
  if (random() % 4 == 0) token += '0';
  token += std::to_string(random() % 48);
  return token;
}

TEST(PlainNumber, AgreesWithTheSlowPathOnRandomText) {
  std::mt19937_64 random(11);
  int taken = 0;
  constexpr int tokens = 400'000;
  for (int n = 0; n < tokens; ++n) {
    const std::string token = random_token(random);
    taken += agrees_with_slow_path<float>(token);
    agrees_with_slow_path<double>(token);
    if (HasFailure()) return;
  }
  EXPECT_GT(taken, tokens * 3 / 4);
}

/// Decimal numbers next to the border between two singles, where rounding twice goes wrong.
TEST(PlainNumber, AgreesWithTheSlowPathNextToBordersBetweenSingles) {
  std::mt19937_64 random(13);
  for (int n = 0; n < 300'000; ++n) {
    const auto exponent = static_cast<std::uint32_t>(90 + random() % 75);
    const auto bits = exponent << 23 | static_cast<std::uint32_t>(random() % (1U << 23));
    const float below = std::bit_cast<float>(bits);
    const double border =
        (double{below} + double{std::nextafter(below, std::numeric_limits<float>::max())}) / 2;
    for (const int digits : {8, 9, 12, 15, 16, 17}) {
      char token[64];
      std::snprintf(token, sizeof token, "%.*e", digits, border);
      agrees_with_slow_path<float>(token);
      std::snprintf(token, sizeof token, "%.*e", digits,
                    std::nextafter(border, n % 2 == 0 ? 0. : 1e300));
      agrees_with_slow_path<float>(token);
    }
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
