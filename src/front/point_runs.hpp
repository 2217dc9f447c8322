#pragma once

#include <cstdint>
#include <vector>

#include "p3dgrid/grid.hpp"
#include "recordio/record_list.hpp"

namespace p3dgrid {

namespace recordio = mod_p3dgrid::recordio;

/// The points of an index range in the order of a file: runs of adjacent points.
class PointRuns {
 public:
  /// @param block  extents of the whole block. Its points must be countable.
  PointRuns(const BlockExtents& block, const IndexRange& range);

  /// Extents of the range.
  [[nodiscard]] const BlockExtents& extents() const { return extents_; }
  [[nodiscard]] std::int64_t points() const { return extents_.points(); }

  /// Appends the entries that read the range to `entry`, whose `count` is that of the range, and
  /// discard the other points.
  void add_to(recordio::ReadList& list, const recordio::Values<void>& entry) const;

 private:
  struct Run {
    std::int64_t first;
    std::int64_t count;
  };
  void add(std::int64_t first, std::int64_t count);

  BlockExtents extents_;
  std::int64_t all_;
  std::vector<Run> runs_;
};

}  // namespace p3dgrid
