#pragma once

#include <cstdint>

/// Changing the precision of whole arrays.
namespace mod_p3dgrid {

/// Copies the first `rows` values of each of `points` points, rounding where `To` is the narrower
/// kind. A point's values lie `from_stride` and `to_stride` values behind those of the point
/// before.
template <class From, class To>
void convert_rows(const From* from, std::int64_t from_stride, To* to, std::int64_t to_stride,
                  std::int64_t rows, std::int64_t points) {
  if (from_stride == rows && to_stride == rows) {
    // One run of values, which compilers turn into wide instructions.
    for (std::int64_t i = 0; i < rows * points; ++i) to[i] = static_cast<To>(from[i]);
    return;
  }
  for (std::int64_t p = 0; p < points; ++p) {
    for (std::int64_t row = 0; row < rows; ++row) {
      to[p * to_stride + row] = static_cast<To>(from[p * from_stride + row]);
    }
  }
}

}  // namespace mod_p3dgrid
