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

/// Calls `copy(value of a line, value of a point)` for all values.
template <class Line, class Point, class Copy>
void for_each_value(Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                    Point* points, std::int64_t stride, Copy copy) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&](auto at_once) {
      for (std::int64_t i = 0; i < count; ++i) {
        for (int r = 0; r < at_once(); ++r) {
          copy(lines[(row + r) * distance + i], points[i * stride + row + r]);
        }
      }
    });
  }
}

}  // namespace detail

/// Copies `rows` lines to their points.
template <class Line, class Point>
void interleave(const Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride) {
  detail::for_each_value(lines, distance, rows, count, points, stride,
                         [](const Line& from, Point& to) { to = static_cast<Point>(from); });
}

/// Collects `rows` lines from their points.
template <class Point, class Line>
void deinterleave(const Point* points, std::int64_t stride, Line* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count) {
  detail::for_each_value(lines, distance, rows, count, points, stride,
                         [](Line& to, const Point& from) { to = static_cast<Line>(from); });
}

}  // namespace mod_p3dgrid::recordio
