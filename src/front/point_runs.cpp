#include "front/point_runs.hpp"

#include <algorithm>

namespace p3dgrid {
namespace {

/// Points of the range in one direction.
std::int32_t length(std::int32_t extent, std::int32_t first, std::int32_t last) {
  return std::max(0, std::min(last, extent - 1) - std::max(first, 0) + 1);
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
    : extents_{length(block.i, range.first.i, range.last.i),
               length(block.j, range.first.j, range.last.j),
               length(block.k, range.first.k, range.last.k)},
      all_(block.points()) {
  if (extents_.points() == 0) return;
  const auto from = [](std::int32_t first) { return std::int64_t{std::max(first, 0)}; };
  for (std::int64_t k = 0; k < extents_.k; ++k) {
    for (std::int64_t j = 0; j < extents_.j; ++j) {
      const std::int64_t line = from(range.first.j) + j + block.j * (from(range.first.k) + k);
      add(from(range.first.i) + block.i * line, extents_.i);
    }
  }
}

void PointRuns::add(std::int64_t first, std::int64_t count) {
  if (!runs_.empty() && runs_.back().first + runs_.back().count == first) {
    runs_.back().count += count;
  } else {
    runs_.push_back({first, count});
  }
}

void PointRuns::add_to(recordio::ReadList& list, const recordio::Values<void>& entry) const {
  std::int64_t at = 0;
  std::int64_t read = 0;
  const auto drop_to = [&](std::int64_t point) {
    if (point > at) list.push_back(recordio::dropped(entry.file_kind, point - at));
  };
  for (const auto& [first, count] : runs_) {
    drop_to(first);
    list.push_back(part_of(entry, read, count));
    read += count;
    at = first + count;
  }
  drop_to(all_);
}

}  // namespace p3dgrid
