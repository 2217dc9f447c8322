#include "recordio/interleave.hpp"

#include <algorithm>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Lines moved in one pass over the points. With their number known to the compiler, g++ and clang
/// unroll the inner loop and move several points at a time, three times as fast as line by line.
constexpr std::int64_t most_lines = 8;

template <int Lines, class T>
void interleave_lines(const T* lines, std::int64_t distance, std::int64_t count, T* points,
                      std::int64_t stride) {
  for (std::int64_t i = 0; i < count; ++i) {
    for (int r = 0; r < Lines; ++r) points[i * stride + r] = lines[r * distance + i];
  }
}

template <int Lines, class T>
void deinterleave_lines(const T* points, std::int64_t stride, T* lines, std::int64_t distance,
                        std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    for (int r = 0; r < Lines; ++r) lines[r * distance + i] = points[i * stride + r];
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

template <class T>
void interleave(const T* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                T* points, std::int64_t stride) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&]<int Lines>() {
      interleave_lines<Lines>(lines + row * distance, distance, count, points + row, stride);
    });
  }
}

template <class T>
void deinterleave(const T* points, std::int64_t stride, T* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count) {
  for (std::int64_t row = 0; row < rows; row += most_lines) {
    with_lines(std::min(most_lines, rows - row), [&]<int Lines>() {
      deinterleave_lines<Lines>(points + row, stride, lines + row * distance, distance, count);
    });
  }
}

template void interleave(const float*, std::int64_t, std::int64_t, std::int64_t, float*,
                         std::int64_t);
template void interleave(const double*, std::int64_t, std::int64_t, std::int64_t, double*,
                         std::int64_t);
template void interleave(const integer*, std::int64_t, std::int64_t, std::int64_t, integer*,
                         std::int64_t);
template void deinterleave(const float*, std::int64_t, float*, std::int64_t, std::int64_t,
                           std::int64_t);
template void deinterleave(const double*, std::int64_t, double*, std::int64_t, std::int64_t,
                           std::int64_t);
template void deinterleave(const integer*, std::int64_t, integer*, std::int64_t, std::int64_t,
                           std::int64_t);

}  // namespace mod_p3dgrid::recordio
