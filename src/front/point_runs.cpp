#include "front/point_runs.hpp"

#include <algorithm>

namespace p3dgrid {
namespace {

/// Points of the range in one direction.
std::int32_t length(std::int32_t extent, std::int32_t first, std::int32_t last) {
  const std::int64_t end = std::min(std::int64_t{last} + 1, std::int64_t{extent});
  return static_cast<std::int32_t>(std::max<std::int64_t>(0, end - first));
}

/// The entry for `count` of its values from `first` on.
recordio::Values<void> part_of(recordio::Values<void> entry, std::int64_t first,
                               std::int64_t count) {
  entry.memory = static_cast<char*>(entry.memory) + first * bytes_of(entry.memory_kind);
  entry.count = count;
  return entry;
}

}  // namespace

PointRuns::PointRuns(const BlockExtents& block, const IndexRange& range)
    : block_(block),
      first_{std::max(range.first.i, 0), std::max(range.first.j, 0), std::max(range.first.k, 0)},
      extents_{length(block.i, first_.i, range.last.i), length(block.j, first_.j, range.last.j),
               length(block.k, first_.k, range.last.k)} {}

/// Calls `take(first, count)` for each run, in file order.
template <class Take>
void PointRuns::for_each_run(Take take) const {
  if (points() == 0) return;
  const auto start = [this](std::int64_t j, std::int64_t k) {
    return first_.i + block_.i * (first_.j + j + block_.j * (first_.k + k));
  };
  const bool whole_lines = extents_.i == block_.i;
  if (whole_lines && extents_.j == block_.j) return take(start(0, 0), points());
  for (std::int64_t k = 0; k < extents_.k; ++k) {
    if (whole_lines) {
      take(start(0, k), std::int64_t{extents_.i} * extents_.j);
      continue;
    }
    for (std::int64_t j = 0; j < extents_.j; ++j) take(start(j, k), extents_.i);
  }
}

void PointRuns::read(SourceFile& source, const recordio::Values<void>& entry) const {
  std::int64_t at = 0;
  std::int64_t read = 0;
  const auto drop_to = [&](std::int64_t point) {
    if (point > at) source.read_part(recordio::dropped(entry.file_kind, point - at));
    at = point;
  };
  for_each_run([&](std::int64_t first, std::int64_t count) {
    drop_to(first);
    source.read_part(part_of(entry, read, count));
    read += count;
    at = first + count;
  });
  drop_to(block_.points());
}

}  // namespace p3dgrid
