#pragma once

#include <cstdint>

/// Files hold values variable after variable, memory point after point. These loops turn one order
/// into the other for a piece that fits the cache.
///
/// `lines` begins with a line of `count` values, the next begins `distance` values behind it, and
/// so on. Value i of line r belongs to `points[i * stride + r]`.
namespace mod_p3dgrid::recordio {

/// Moves `rows` lines to their points.
template <class T>
void interleave(const T* lines, std::int64_t distance, std::int64_t rows, std::int64_t count,
                T* points, std::int64_t stride);

/// Collects `rows` lines from their points.
template <class T>
void deinterleave(const T* points, std::int64_t stride, T* lines, std::int64_t distance,
                  std::int64_t rows, std::int64_t count);

}  // namespace mod_p3dgrid::recordio
