#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace p3dgrid {

/// Number of values in a text file: numbers separated by blanks, commas or line ends, a repeat
/// count such as `3*0.5` counted as often. None for text that holds something else (comments, null
/// values, slashes), of which only its readers can say what counts.
[[nodiscard]] std::optional<std::int64_t> count_values(const std::string& path);

/// True when every number of a text file becomes the same single-precision value directly and by
/// way of double precision; false also for text of which `count_values` knows nothing.
[[nodiscard]] bool survives_double_precision(const std::string& path);

/// True when all of `start` is readable; false for nothing at all.
[[nodiscard]] bool is_text(std::string_view start);

/// True when the file begins with readable characters.
[[nodiscard]] bool begins_with_text(const std::string& path);

}  // namespace p3dgrid
