#pragma once

#include <cstdint>

/// Transposes between files, which hold variable after variable, and memory, which holds point
/// after point, for a tile that fits the cache.
///
/// Line r holds `count` values from `lines[r * distance]`. Its value i corresponds to
/// `points[i * stride + r]`. If their types differ, values are rounded or widened.
namespace mod_p3dgrid::recordio {

/// Copies `rows` lines to their points.
template <class Line, class Point>
void interleave(const Line* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                Point* points, std::int64_t stride);

/// Collects `rows` lines from their points.
template <class Point, class Line>
void deinterleave(const Point* points, std::int64_t stride, Line* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count);

}  // namespace mod_p3dgrid::recordio
