#pragma once

#include <cstdint>

/// Files hold values variable after variable, memory point after point. These loops turn one order
/// into the other for a piece that fits the cache.
///
/// `lines` begins with a line of `count` values, the next begins `distance` values behind it, and
/// so on. Value i of line r belongs to `points[i * stride + r]`. Where the kinds of lines and
/// points differ, values are rounded or widened.
namespace mod_p3dgrid::recordio {

/// Moves `rows` lines to their points.
template <class Line, class Point>
void interleave(const Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride);

/// Collects `rows` lines from their points.
template <class Point, class Line>
void deinterleave(const Point* points, std::int64_t stride, Line* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count);

}  // namespace mod_p3dgrid::recordio
