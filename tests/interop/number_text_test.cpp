/// Numbers as text: what is written reads back to the same bits, and the C library, which shares
/// no code with the reader, agrees on every text.

#include "recordio/number_text.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>

namespace interop {
namespace {

using mod_p3dgrid::recordio::number_room;
using mod_p3dgrid::recordio::parse_number;
using mod_p3dgrid::recordio::write_number;

template <class Real>
using BitsOf = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;

template <class Real>
BitsOf<Real> bits_of(Real value) {
  return std::bit_cast<BitsOf<Real>>(value);
}

float from_c_library(const char* text, float) {
  return std::strtof(text, nullptr);
}
double from_c_library(const char* text, double) {
  return std::strtod(text, nullptr);
}

/// Whether the library reads the text as the C library does.
template <class Real>
bool reads_as_c_library(const char* text) {
  Real value = 0;
  return parse_number(std::string_view(text), value) &&
         bits_of(value) == bits_of(from_c_library(text, Real{}));
}

/// The text that the C++ library finds shortest.
template <class Real>
std::string shortest_text(Real value) {
  std::array<char, number_room> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// Whether a value of these bits goes to text and back. Of a NaN the C library knows no more than
/// that it is one.
template <class Real>
bool round_trips(BitsOf<Real> bits) {
  const Real value = std::bit_cast<Real>(bits);
  std::array<char, number_room + 1> text;
  char* const end = write_number(text.data(), value);
  if (end - text.data() > number_room) return false;
  if (!std::isnan(value) && std::string_view(text.data(), end) != shortest_text(value))
    return false;
  *end = '\0';
  Real back = 0;
  if (!parse_number(std::string_view(text.data(), end), back) || bits_of(back) != bits) {
    return false;
  }
  const Real other = from_c_library(text.data(), Real{});
  return std::isnan(value) ? std::isnan(other) : bits_of(other) == bits;
}

template <class Real>
void expect_round_trip(BitsOf<Real> bits) {
  ASSERT_TRUE(round_trips<Real>(bits)) << "bits " << std::hex << bits;
}

/// Every exponent of either sign, infinities and NaNs among them, with mantissas from both ends and
/// from the middle.
template <class Real>
void expect_round_trips_of_all_exponents() {
  constexpr int mantissa_bits = std::numeric_limits<Real>::digits - 1;
  constexpr int bits_in_all = 8 * sizeof(Real);
  using Bits = BitsOf<Real>;
  constexpr Bits mantissas = Bits{1} << mantissa_bits;
  for (Bits upper = 0; upper < Bits{1} << (bits_in_all - mantissa_bits); ++upper) {
    for (Bits offset = 0; offset < 40; ++offset) {
      for (const Bits mantissa : {offset, mantissas - 1 - offset, mantissas / 2 + offset,
                                  mantissas / 2 - 1 - offset, mantissas / 3 + offset}) {
        expect_round_trip<Real>(upper << mantissa_bits | mantissa);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(NumberText, SinglesOfAllExponentsRoundTrip) {
  expect_round_trips_of_all_exponents<float>();
}
TEST(NumberText, DoublesOfAllExponentsRoundTrip) {
  expect_round_trips_of_all_exponents<double>();
}

/// One of so many bit patterns is tried; P3DGRID_FLOAT_STRIDE=1 tries all 2^32.
std::uint64_t single_stride() {
  const char* const given = std::getenv("P3DGRID_FLOAT_STRIDE");
  constexpr std::uint64_t everyday = 1021;
  return given == nullptr ? everyday : std::stoull(given);
}

TEST(NumberText, SinglesRoundTrip) {
  const std::uint64_t stride = single_stride();
  ASSERT_GE(stride, 1U);
  for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += stride) {
    ASSERT_NO_FATAL_FAILURE(expect_round_trip<float>(static_cast<std::uint32_t>(bits)));
  }
}

TEST(NumberText, RandomDoublesRoundTrip) {
  std::mt19937_64 random(7);
  for (int n = 0; n < 1'000'000; ++n) {
    ASSERT_NO_FATAL_FAILURE(expect_round_trip<double>(random()));
  }
}

/// Decimals of few digits lie nearest to the middles and ends that have to be told apart.
TEST(NumberText, DoublesOfFewDigitsRoundTrip) {
  std::mt19937_64 random(19);
  for (int n = 0; n < 1'000'000; ++n) {
    const auto digits = static_cast<double>(random() >> (11 + random() % 53));
    const double value = digits * std::pow(10.0, static_cast<int>(random() % 60) - 30);
    ASSERT_NO_FATAL_FAILURE(expect_round_trip<double>(std::bit_cast<std::uint64_t>(value)));
  }
}

TEST(NumberText, IntegersRoundTrip) {
  std::mt19937 random(11);
  for (int n = 0; n < 1'000'000; ++n) {
    const auto value = n == 0   ? std::numeric_limits<std::int32_t>::min()
                       : n == 1 ? std::numeric_limits<std::int32_t>::max()
                                : static_cast<std::int32_t>(random() >> (n % 32));
    std::array<char, number_room> text;
    const std::string_view written(text.data(), write_number(text.data(), value));
    std::int32_t back = ~value;
    ASSERT_TRUE(parse_number(written, back)) << written;
    ASSERT_EQ(back, value) << written;
    ASSERT_EQ(written, std::to_string(value));
  }
}

/// The exact decimal expansion of what lies halfway between a single and its successor, and the
/// same a last digit up: rounding needs all of the digits.
TEST(NumberText, HalfwayDecimalsAreReadAsTheCLibraryReadsThem) {
  std::mt19937 random(13);
  for (int n = 0; n < 50'000; ++n) {
    const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random() & 0x7FFFFFFF));
    if (!std::isfinite(value)) continue;
    const double half =
        (double{value} + double{std::nextafter(value, std::numeric_limits<float>::max())}) / 2;
    std::array<char, 400> text;
    std::snprintf(text.data(), text.size(), "%.160e", half);
    std::string longer = text.data();
    ASSERT_TRUE(reads_as_c_library<float>(longer.c_str())) << longer;
    longer.insert(longer.find('e'), "0000000001");
    ASSERT_TRUE(reads_as_c_library<float>(longer.c_str())) << longer;
  }
}

std::string random_digits(std::mt19937& random, std::size_t most) {
  std::string digits;
  for (std::size_t n = random() % (most + 1); n > 0; --n) {
    digits += static_cast<char>('0' + random() % 10);
  }
  return digits;
}

/// Decimals of any length, far beyond the ends of the range too, where infinity and zero begin.
TEST(NumberText, RandomDecimalsAreReadAsTheCLibraryReadsThem) {
  std::mt19937 random(17);
  for (int n = 0; n < 500'000; ++n) {
    std::string text = random() % 2 == 0 ? "-" : "";
    text += "0" + random_digits(random, 30) + "." + random_digits(random, 30);
    if (random() % 4 != 0) {
      const int exponent = static_cast<int>(random() % 800) - 400;
      text += (random() % 2 == 0 ? "e" : "E") + std::to_string(exponent);
    }
    ASSERT_TRUE(reads_as_c_library<float>(text.c_str())) << text;
    ASSERT_TRUE(reads_as_c_library<double>(text.c_str())) << text;
  }
}

}  // namespace
}  // namespace interop
