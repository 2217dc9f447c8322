#pragma once

#include <cstdint>
#include <span>

#include "host.hpp"
#include "options.hpp"
#include "scratch.hpp"

namespace fuzz {

using Content = std::span<const std::uint8_t>;

/// Each target defines these two.
/// @{
/// Writes the files that the operation reads.
void place_files(const Options& options, Content content);
/// Calls the operation by way of `attempt`, and looks at what it hands over.
void run_operation(const Options& options);
/// @}

/// Length of the first file, or of each but the last, where an input holds several.
[[nodiscard]] std::size_t split_length(const Options& options, Content content);

/// Reads every value, so that an array that is shorter than it says shows.
template <class Array>
void touch(const Array& array) {
  volatile double sum = 0;
  for (const auto value : array.span()) sum = sum + static_cast<double>(value);
}

}  // namespace fuzz
