#pragma once

#include <cstdint>
#include <span>
#include <string_view>

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

/// Writes the one file of an input. One that is to be stretched gets zeros, text gets blanks, so
/// that a small input reaches what only large files do.
void place_file(const Options& options, std::string_view name, Content content);

/// Reads every value, so that an array that is shorter than it says shows.
template <class Array>
void touch(const Array& array) {
  volatile double sum = 0;
  for (const auto value : array.span()) sum = sum + static_cast<double>(value);
}

}  // namespace fuzz
