#include "recordio/interleave.hpp"

#include <algorithm>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Lines moved in one pass. Since their number is a constant, compilers unroll the inner loop and
/// vectorise, which is three times as fast as line by line.
constexpr std::int64_t most_lines = 8;

template <int Lines, class Line, class Point>
void interleave_lines(const Line* lines, std::int64_t distance, std::int64_t count, Point* points,
                      std::int64_t stride) {
  for (std::int64_t i = 0; i < count; ++i) {
    for (int r = 0; r < Lines; ++r) {
      points[i * stride + r] = static_cast<Point>(lines[r * distance + i]);
    }
  }
}

template <int Lines, class Point, class Line>
void deinterleave_lines(const Point* points, std::int64_t stride, Line* lines,
                        std::int64_t distance, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    for (int r = 0; r < Lines; ++r) {
      lines[r * distance + i] = static_cast<Line>(points[i * stride + r]);
    }
  }
}

/// Calls `visit` with the number of lines, 1 to `most_lines`, as a template argument.
template <int Lines = 1, class Visit>
void with_lines(std::int64_t lines, Visit visit) {
  if constexpr (Lines < most_lines) {
    if (lines != Lines) return with_lines<Lines + 1>(lines, visit);
  }
  visit.template operator()<Lines>();
}

}  // namespace

template <class Line, class Point>
void interleave(const Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&]<int Lines>() {
      interleave_lines<Lines>(lines + row * distance, distance, count, points + row, stride);
    });
  }
}

template <class Point, class Line>
void deinterleave(const Point* points, std::int64_t stride, Line* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&]<int Lines>() {
      deinterleave_lines<Lines>(points + row, stride, lines + row * distance, distance, count);
    });
  }
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
