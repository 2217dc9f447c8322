#include "support/awkward_values.hpp"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace interop {
namespace {

/// Both signs of what is awkward in any kind.
template <class Real>
std::vector<Real> awkward_ends() {
  using Limits = std::numeric_limits<Real>;
  const Real one = 1;
  std::vector<Real> values;
  for (const Real magnitude : {Real{0},
                               Limits::denorm_min(),
                               3 * Limits::denorm_min(),
                               Limits::min() - Limits::denorm_min(),
                               Limits::min(),
                               Limits::max(),
                               std::nextafter(Limits::max(), one),
                               one / 3,
                               2 * one / 3,
                               one / 10,
                               one / 7,
                               one,
                               std::nextafter(one, Limits::max()),
                               std::nextafter(one, Real{0}),
                               Real(9999999),
                               Real(16777216),
                               Real(16777217),
                               Real(123456.789),
                               Real(1e-5),
                               Real(1e20)}) {
    values.push_back(magnitude);
    values.push_back(-magnitude);
  }
  return values;
}

/// Doubles that are hard to round to single: ties, near ties, beyond either end of the range.
std::vector<double> hard_to_narrow() {
  const double half_step = std::ldexp(1.0, -24);
  const double largest = std::numeric_limits<float>::max();
  const double smallest = std::numeric_limits<float>::denorm_min();
  std::vector<double> values{1 + half_step,
                             1 + 3 * half_step,
                             1e300,
                             -1e300,
                             1e-300,
                             -1e-300,
                             smallest / 2,
                             std::nextafter(smallest / 2, 1.0),
                             1.5 * smallest,
                             largest + std::ldexp(1.0, 102),
                             largest + std::ldexp(1.0, 103)};
  values.push_back(std::nextafter(values[0], 2.0));
  values.push_back(std::nextafter(values[0], 0.0));
  values.push_back(std::nextafter(values[10], 0.0));
  return values;
}

template <class Real, class Bits>
Real random_finite(std::mt19937_64& random) {
  for (;;) {
    const Real value = std::bit_cast<Real>(static_cast<Bits>(random()));
    if (std::isfinite(value)) return value;
  }
}

/// A double of any mantissa whose exponent lies within or just outside what single can express.
double random_near_single(std::mt19937_64& random) {
  const double mantissa = std::ldexp(static_cast<double>(random() >> 11), -53) + 1;
  const int exponent = static_cast<int>(random() % 282) - 152;
  return std::ldexp(random() % 2 == 0 ? mantissa : -mantissa, exponent);
}

}  // namespace

std::vector<float> awkward_floats(std::size_t count) {
  std::vector<float> values = awkward_ends<float>();
  std::mt19937_64 random(20240229);
  while (values.size() < count) values.push_back(random_finite<float, std::uint32_t>(random));
  values.resize(count);
  return values;
}

std::vector<double> awkward_doubles(std::size_t count) {
  std::vector<double> values = awkward_ends<double>();
  for (const double value : hard_to_narrow()) values.push_back(value);
  for (const float value : awkward_ends<float>()) values.push_back(double{value});
  std::mt19937_64 random(20240229);
  while (values.size() < count) {
    values.push_back(random_finite<double, std::uint64_t>(random));
    values.push_back(random_near_single(random));
  }
  values.resize(count);
  return values;
}

std::vector<std::int32_t> awkward_integers(std::size_t count) {
  std::vector<std::int32_t> values{0, 1, -1, -2, 2147483647, -2147483647 - 1, -999999, 17};
  std::mt19937 random(20240301);
  while (values.size() < count) values.push_back(static_cast<std::int32_t>(random()));
  values.resize(count);
  return values;
}

}  // namespace interop
