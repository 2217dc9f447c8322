#include "recordio/number_text.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace mod_p3dgrid::recordio {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

template <class Number>
std::optional<Number> parsed(std::string_view token) {
  Number value{};
  if (!parse_number(token, value)) return std::nullopt;
  return value;
}

template <class Number>
std::string written(Number value) {
  char text[number_room];
  return {text, write_number(text, value)};
}

struct Accepted {
  const char* token;
  double value;
};

TEST(NumberText, EveryFormOfARealIsAccepted) {
  for (const auto& [token, value] : {Accepted{"1", 1},
                                     {"1.", 1},
                                     {".5", .5},
                                     {"+.5", .5},
                                     {"-5.", -5},
                                     {"007", 7},
                                     {"1e3", 1e3},
                                     {"1E3", 1e3},
                                     {"1d3", 1e3},
                                     {"1D3", 1e3},
                                     {"1q3", 1e3},
                                     {"1Q3", 1e3},
                                     {"1.5D+03", 1.5e3},
                                     {"1.5d-3", 1.5e-3},
                                     {"1.5+3", 1.5e3},
                                     {"1.5-3", 1.5e-3},
                                     {"15+1", 150},
                                     {"-.25E+01", -2.5},
                                     {"+1.0e+0", 1},
                                     {"0.E+0", 0},
                                     {"1e0000000000000000000000000002", 100},
                                     {"0e99999999999999999999", 0}}) {
    EXPECT_EQ(parsed<double>(token), value) << token;
    EXPECT_EQ(parsed<float>(token), static_cast<float>(value)) << token;
  }
}

TEST(NumberText, WhatIsNotWhollyANumberIsRejectedAndLeavesTheValue) {
  for (const char* token : {"",
                            "+",
                            "-",
                            ".",
                            "e5",
                            "1e",
                            "1e+",
                            "1d",
                            "1.5.2",
                            "1..",
                            "--1",
                            "+-1",
                            "1x",
                            "x1",
                            "0x10",
                            "1e5.0",
                            "1e5e5",
                            "1d5-",
                            "1 ",
                            "1,5",
                            "T",
                            ".true.",
                            "(1,2)",
                            "'1'",
                            "infin",
                            "infinityx",
                            "nanx",
                            "nan(",
                            "nan)",
                            "nan(1",
                            "1_4",
                            "*",
                            "\xef\xbb\xbf"
                            "1"}) {
    float value = 42;
    EXPECT_FALSE(parse_number(token, value)) << token;
    EXPECT_EQ(value, 42) << token;
    EXPECT_FALSE(parsed<double>(token)) << token;
  }
}

TEST(NumberText, InfinitiesAndNaNsInTheUsualSpellings) {
  for (const char* token : {"inf", "INF", "Inf", "infinity", "INFINITY", "+Infinity", "+inf"}) {
    EXPECT_EQ(parsed<float>(token), infinity) << token;
  }
  EXPECT_EQ(parsed<float>("-Inf"), -infinity);
  EXPECT_EQ(parsed<float>("-INFINITY"), -infinity);
  for (const char* token : {"nan", "NaN", "NAN", "+nan", "nan()", "NaN(abc)", "-nan"}) {
    ASSERT_TRUE(parsed<double>(token)) << token;
    EXPECT_TRUE(std::isnan(*parsed<double>(token))) << token;
  }
}

TEST(NumberText, RealsBeyondTheRangeRoundToInfinityAndZero) {
  EXPECT_EQ(parsed<float>("1e39"), infinity);
  EXPECT_EQ(parsed<float>("-123456789012345678901234567890123456789012.5"), -infinity);
  EXPECT_EQ(parsed<float>("0.0001e44"), infinity);
  EXPECT_EQ(parsed<float>("1e-60"), 0.F);
  EXPECT_TRUE(std::signbit(*parsed<float>("-1d-60")));
  EXPECT_EQ(parsed<float>("1e99999999999999999999"), infinity);
  EXPECT_EQ(parsed<double>("1e-99999999999999999999"), 0.0);
  EXPECT_EQ(parsed<double>("1d309"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(parsed<float>("1e-45"), std::numeric_limits<float>::denorm_min());
  EXPECT_EQ(parsed<float>("3.4028235e38"), std::numeric_limits<float>::max());
}

TEST(NumberText, IntegersMustBeWholeAndFit) {
  EXPECT_EQ(parsed<integer>("0"), 0);
  EXPECT_EQ(parsed<integer>("+12"), 12);
  EXPECT_EQ(parsed<integer>("-7"), -7);
  EXPECT_EQ(parsed<integer>("2147483647"), 2147483647);
  EXPECT_EQ(parsed<integer>("-2147483648"), std::numeric_limits<integer>::min());
  for (const char* token : {"", "+", "-", "2147483648", "-2147483649", "99999999999", "1.", "1.0",
                            "1e1", "++1", "+-1", "0x1", "1a"}) {
    EXPECT_FALSE(parsed<integer>(token)) << token;
  }
}

TEST(NumberText, RealsAreWrittenInTheShortestFormThatReadsBack) {
  EXPECT_EQ(written(0.1F), "0.1");
  EXPECT_EQ(written(0.1), "0.1");
  EXPECT_EQ(written(1.0F), "1");
  EXPECT_EQ(written(-0.0F), "-0");
  EXPECT_EQ(written(1e20F), "1e+20");
  EXPECT_EQ(written(infinity), "inf");
  EXPECT_EQ(written(-infinity), "-inf");
  EXPECT_EQ(written(integer{-42}), "-42");
}

TEST(NumberText, EveryKindOfFloatKeepsItsBits) {
  // All signs and exponents with the fractions at their ends and some between.
  for (std::uint32_t head = 0; head < 512; ++head) {
    for (const std::uint32_t fraction : {0U, 1U, 0x2AAAAAU, 0x400000U, 0x7FFFFEU, 0x7FFFFFU}) {
      const auto value = std::bit_cast<float>(head << 23 | fraction);
      const auto back = parsed<float>(written(value));
      ASSERT_TRUE(back) << written(value);
      EXPECT_EQ(std::bit_cast<std::uint32_t>(*back), head << 23 | fraction) << written(value);
    }
  }
}

TEST(NumberText, EveryKindOfDoubleKeepsItsBits) {
  for (std::uint64_t head = 0; head < 4096; ++head) {
    for (const std::uint64_t fraction : {0ULL, 1ULL, 0x5555555555555ULL, 0xFFFFFFFFFFFFFULL}) {
      const auto value = std::bit_cast<double>(head << 52 | fraction);
      const auto back = parsed<double>(written(value));
      ASSERT_TRUE(back) << written(value);
      EXPECT_EQ(std::bit_cast<std::uint64_t>(*back), head << 52 | fraction) << written(value);
    }
  }
}

}  // namespace
}  // namespace mod_p3dgrid::recordio
