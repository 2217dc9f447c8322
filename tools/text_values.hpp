#pragma once

#include <string>

namespace p3dgrid {

/// True when every number of a text file becomes the same single-precision value directly and by
/// way of double precision; false also for text that holds more than finite numbers.
[[nodiscard]] bool survives_double_precision(const std::string& path);

}  // namespace p3dgrid
