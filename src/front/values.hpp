#pragma once

#include "format/header.hpp"
#include "front/file.hpp"
#include "p3dgrid/grid.hpp"

/// The values of one record in memory.
namespace p3dgrid {

[[nodiscard]] constexpr recordio::FileKind kind_of(Precision precision) {
  return precision == Precision::double_precision ? recordio::FileKind::real8
                                                  : recordio::FileKind::real4;
}

/// The kind of values in the file. Text has the digits of the values in memory.
[[nodiscard]] inline recordio::FileKind kind_to_write(const Coding& coding, const Reals& values) {
  return is_text(coding) ? kind_of(values.precision()) : real_kind(coding);
}

/// The list entry for all values. Those of text that are left out become 0.
/// @param kind  in the file
template <class Real>
[[nodiscard]] recordio::Values<void> values_of(std::span<Real> values, recordio::FileKind kind) {
  auto entry = recordio::stored_as(kind, recordio::values(values.data(), std::ssize(values)));
  entry.zero_where_left_out = true;
  return entry;
}
[[nodiscard]] inline recordio::Values<void> values_of(Reals& reals, recordio::FileKind kind) {
  return reals.visit([&](auto values) { return values_of(values, kind); });
}
[[nodiscard]] inline recordio::Values<const void> values_of(const Reals& reals,
                                                            recordio::FileKind kind) {
  return reals.visit([&](auto values) {
    return recordio::stored_as(kind, recordio::values(values.data(), std::ssize(values)));
  });
}

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
