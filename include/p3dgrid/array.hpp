#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

namespace p3dgrid {

/// Leaves the new elements of a vector uninitialised, because a read overwrites them.
template <class T>
struct UninitialisedAllocator : std::allocator<T> {
  /// Constructs an element without a value.
  template <class U>
  void construct(U* place) noexcept {
    ::new (static_cast<void*>(place)) U;
  }
  /// Constructs an element with a value.
  template <class U, class... Values>
  void construct(U* place, Values&&... values) {
    ::new (static_cast<void*>(place)) U(std::forward<Values>(values)...);
  }
};

/// A vector whose elements are uninitialised unless they are given values.
template <class T>
using Array = std::vector<T, UninitialisedAllocator<T>>;

/// Real values in single or double precision.
class Reals {
 public:
  /// Returns `function(values)`, where `values` is a `std::span` of `float` or of `double`.
  template <class Function>
  decltype(auto) visit(Function&& function) {
    return std::visit([&](auto& array) -> decltype(auto) { return function(std::span(array)); },
                      values_);
  }
  /// The same for values that stay unchanged.
  template <class Function>
  decltype(auto) visit(Function&& function) const {
    return std::visit(
        [&](const auto& array) -> decltype(auto) { return function(std::span(array)); }, values_);
  }

  /// No values.
  Reals() = default;
  /// `count` uninitialised values.
  Reals(Precision precision, std::int64_t count) {
    if (precision == Precision::double_precision) values_.emplace<Array<double>>();
    std::visit([count](auto& array) { array.resize(static_cast<std::size_t>(count)); }, values_);
  }
  /// Takes over values in single precision.
  explicit Reals(Array<float> values) : values_(std::move(values)) {}
  /// Takes over values in double precision.
  explicit Reals(Array<double> values) : values_(std::move(values)) {}

  /// Their precision.
  [[nodiscard]] Precision precision() const {
    return std::holds_alternative<Array<double>>(values_) ? Precision::double_precision
                                                          : Precision::single_precision;
  }
  /// Number of values.
  [[nodiscard]] std::int64_t size() const {
    return visit([](auto values) { return std::ssize(values); });
  }
  /// Whether there are none.
  [[nodiscard]] bool empty() const { return size() == 0; }

  /// A value, counted from 0. Loops over many values are faster in `visit`.
  [[nodiscard]] double operator[](std::int64_t index) const {
    return visit([index](auto values) {
      return static_cast<double>(values[static_cast<std::size_t>(index)]);
    });
  }

  /// The values, which must be of this type.
  template <class Real>
  [[nodiscard]] std::span<const Real> span() const {
    return std::get<Array<Real>>(values_);
  }

  /// Compares precision and values.
  friend bool operator==(const Reals&, const Reals&) = default;

 private:
  std::variant<Array<float>, Array<double>> values_;
};

/// This number of values, all 0.
[[nodiscard]] inline Reals zeros(Precision precision, std::int64_t count) {
  Reals reals(precision, count);
  reals.visit([](auto values) { std::ranges::fill(values, 0); });
  return reals;
}

/// Whether all values are 0.
[[nodiscard]] inline bool is_zero(const Reals& reals) {
  return reals.visit([](auto values) {
    return std::ranges::all_of(values, [](auto value) { return value == 0; });
  });
}

}  // namespace p3dgrid

#pragma GCC visibility pop
