#pragma once

#include <cstdint>

#include "front/file.hpp"
#include "p3dgrid/grid.hpp"

namespace p3dgrid {

/// The points of an index range in the order of a file: runs of adjacent points.
class PointRuns {
 public:
  /// @param block  extents of the whole block. Its points must be countable.
  PointRuns(const BlockExtents& block, const IndexRange& range);

  /// Extents of the range.
  [[nodiscard]] const BlockExtents& extents() const { return extents_; }
  [[nodiscard]] std::int64_t points() const { return extents_.points(); }

  /// Reads the range to `entry`, whose `count` is that of the range, from the values of the whole
  /// block, which are the next in the record. The other values are discarded.
  void read(SourceFile& source, const recordio::Values<void>& entry) const;

 private:
  template <class Take>
  void for_each_run(Take take) const;

  BlockExtents block_;
  IndexRange range_;
  BlockExtents extents_;
};

}  // namespace p3dgrid
