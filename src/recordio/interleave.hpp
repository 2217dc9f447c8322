#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

/// Transposes between files, which hold variable after variable, and memory, which holds point
/// after point, for a tile that fits the cache.
///
/// Line r holds `count` values from `lines[r * distance]`. Its value i corresponds to
/// `points[i * stride + r]`. If their types differ, values are rounded or widened.
namespace mod_p3dgrid::recordio {
namespace detail {

/// Lines moved in one pass. Since their number is a constant, compilers unroll the inner loop and
/// vectorise, which is three times as fast as line by line.
inline constexpr std::int64_t most_lines = 8;

/// Calls `visit` with the number of lines, 1 to `most_lines`, as a template argument.
template <int Lines = 1, class Visit>
void with_lines(std::int64_t lines, Visit visit) {
  if constexpr (Lines < most_lines) {
    if (lines != Lines) return with_lines<Lines + 1>(lines, visit);
  }
  visit(std::integral_constant<int, Lines>());
}

}  // namespace detail

/// Copies `rows` lines to the points. If the points are const, copies from the points to the lines.
template <class Line, class Point>
void interleave(Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride) {
  for (std::int64_t row = 0; row < rows; row += detail::most_lines) {
    detail::with_lines(std::min(detail::most_lines, rows - row), [&](auto at_once) {
      for (std::int64_t i = 0; i < count; ++i) {
        for (int r = 0; r < at_once(); ++r) {
          Line& in_line = lines[(row + r) * distance + i];
          Point& at_point = points[i * stride + row + r];
          if constexpr (std::is_const_v<Point>) {
            in_line = static_cast<Line>(at_point);
          } else {
            at_point = static_cast<Point>(in_line);
          }
        }
      }
    });
  }
}

}  // namespace mod_p3dgrid::recordio
