#include <cstring>
#include <vector>

#include "front/values.hpp"

namespace p3dgrid {
namespace {

/// The entry for `count` of its values from `first` on.
recordio::Values<void> part_of(recordio::Values<void> entry, std::int64_t first,
                               std::int64_t count) {
  entry.memory = static_cast<char*>(entry.memory) + first * bytes_of(entry.memory_kind);
  entry.count = count;
  return entry;
}

/// Copies every `stride`-th of the values in `line` to the entry.
void take_every(std::int32_t stride, const std::vector<char>& line, recordio::Values<void> entry) {
  const auto size = static_cast<std::size_t>(bytes_of(entry.memory_kind));
  char* to = static_cast<char*>(entry.memory);
  for (std::size_t from = 0; from < line.size(); from += static_cast<std::size_t>(stride) * size) {
    std::memcpy(to, line.data() + from, size);
    to += size;
  }
}

}  // namespace

PointRuns::PointRuns(const BlockExtents& block, const IndexRange& range)
    : block_(block), range_(range.in(block)), extents_(range.extents_in(block)) {}

/// Calls `take(first, count)` for each run, in file order. With a stride in i a run includes the
/// points between.
template <class Take>
void PointRuns::for_each_run(Take take) const {
  if (points() == 0) return;
  const Indices i = range_.of(Direction::i);
  const Indices j = range_.of(Direction::j);
  const Indices k = range_.of(Direction::k);
  const auto start = [&](std::int64_t row, std::int64_t plane) {
    return i.first + block_.i * (row + block_.j * plane);
  };
  const bool whole_lines = extents_.i == block_.i;
  const bool whole_planes = whole_lines && extents_.j == block_.j;
  if (whole_planes && k.stride == 1) return take(start(0, k.first), points());
  const std::int64_t in_plane = std::int64_t{extents_.i} * extents_.j;
  for (std::int64_t plane = k.first; plane <= k.last; plane += k.stride) {
    if (whole_lines && j.stride == 1) {
      take(start(j.first, plane), in_plane);
      continue;
    }
    for (std::int64_t row = j.first; row <= j.last; row += j.stride) {
      take(start(row, plane), std::int64_t{i.last} - i.first + 1);
    }
  }
}

void PointRuns::read(SourceFile& source, const recordio::Values<void>& entry) const {
  const std::int32_t stride = range_.stride.i;
  std::vector<char> line;
  std::int64_t at = 0;
  std::int64_t read = 0;
  const auto drop_to = [&](std::int64_t point) {
    if (point > at) source.read_part(recordio::dropped(entry.file_kind, point - at));
    at = point;
  };
  for_each_run([&](std::int64_t first, std::int64_t count) {
    drop_to(first);
    if (extents_.i == 1 || stride == 1) {
      source.read_part(part_of(entry, read, count));
      read += count;
    } else {
      line.resize(static_cast<std::size_t>(count * bytes_of(entry.memory_kind)));
      recordio::Values<void> whole = entry;
      whole.memory = line.data();
      whole.count = count;
      source.read_part(whole);
      take_every(stride, line, part_of(entry, read, extents_.i));
      read += extents_.i;
    }
    at = first + count;
  });
  drop_to(block_.points());
}

}  // namespace p3dgrid
