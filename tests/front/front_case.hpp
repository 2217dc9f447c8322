#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "p3dgrid/array.hpp"
#include "p3dgrid/error.hpp"

namespace test_support {

[[nodiscard]] inline std::vector<double> list_of(const p3dgrid::Reals& reals) {
  return reals.visit([](auto values) { return std::vector<double>(values.begin(), values.end()); });
}

/// The error that a call throws.
template <class Call>
[[nodiscard]] p3dgrid::Error error_of(Call call) {
  try {
    call();
  } catch (const p3dgrid::Error& error) {
    return error;
  }
  ADD_FAILURE() << "nothing is thrown";
  return p3dgrid::Error({});
}

}  // namespace test_support
