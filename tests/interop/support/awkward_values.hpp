#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace interop {

/// `count` finite values, awkward ones first: both zeros, denormals, the ends of the range, values
/// halfway between two singles, fractions that no base expresses; then pseudo-random bit patterns,
/// the same in every run.
[[nodiscard]] std::vector<float> awkward_floats(std::size_t count);
[[nodiscard]] std::vector<double> awkward_doubles(std::size_t count);

/// `count` integers, the ends of the range and negative ones first.
[[nodiscard]] std::vector<std::int32_t> awkward_integers(std::size_t count);

}  // namespace interop
