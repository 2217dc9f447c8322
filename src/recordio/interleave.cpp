#include "recordio/interleave.hpp"

#include <algorithm>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Lines moved in one pass. Since their number is a constant, compilers unroll the inner loop and
/// vectorise, which is three times as fast as line by line.
constexpr std::int64_t most_lines = 8;

/// Calls `visit` with the number of lines, 1 to `most_lines`, as a template argument.
template <int Lines = 1, class Visit>
void with_lines(std::int64_t lines, Visit visit) {
  if constexpr (Lines < most_lines) {
    if (lines != Lines) return with_lines<Lines + 1>(lines, visit);
  }
  visit.template operator()<Lines>();
}

/// Calls `copy(value of a line, value of a point)` for all values.
template <class Line, class Point, class Copy>
void for_each_value(Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                    Point* points, std::int64_t stride, Copy copy) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&]<int Lines>() {
      for (std::int64_t i = 0; i < count; ++i) {
        for (int r = 0; r < Lines; ++r) {
          copy(lines[(row + r) * distance + i], points[i * stride + row + r]);
        }
      }
    });
  }
}

}  // namespace

template <class Line, class Point>
void interleave(const Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride) {
  for_each_value(lines, distance, rows, count, points, stride,
                 [](const Line& from, Point& to) { to = static_cast<Point>(from); });
}

template <class Point, class Line>
void deinterleave(const Point* points, std::int64_t stride, Line* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count) {
  for_each_value(lines, distance, rows, count, points, stride,
                 [](Line& to, const Point& from) { to = static_cast<Line>(from); });
}

#define P3D_INSTANTIATE(Line, Point)                                                        \
  template void interleave(const Line*, std::int64_t, std::int64_t, std::int64_t, Point*,   \
                           std::int64_t);                                                   \
  template void deinterleave(const Point*, std::int64_t, Line*, std::int64_t, std::int64_t, \
                             std::int64_t);
P3D_INSTANTIATE(integer, integer)
P3D_INSTANTIATE(float, float)
P3D_INSTANTIATE(double, double)
P3D_INSTANTIATE(float, double)
P3D_INSTANTIATE(double, float)
#undef P3D_INSTANTIATE

}  // namespace mod_p3dgrid::recordio
