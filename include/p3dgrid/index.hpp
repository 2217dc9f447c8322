#pragma once

#include <cstdint>
#include <vector>

#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// The byte ranges of every array in an unformatted or binary file, for programs that read or write
/// the values by other means, such as mapped memory or MPI-IO. Text has no index.
namespace p3dgrid {

/// How a value is stored in an unformatted or binary file.
enum class ValueKind : std::uint8_t { integer4, real4, real8 };

/// Bytes of a value.
[[nodiscard]] constexpr std::int64_t bytes_of(ValueKind kind) {
  return kind == ValueKind::real8 ? 8 : 4;
}

/// Adjacent bytes of a file.
struct ByteRange {
  std::int64_t offset = 0;  ///< of the first, from 0
  std::int64_t bytes = 0;   ///< number of bytes

  /// Compares both members.
  friend bool operator==(const ByteRange&, const ByteRange&) = default;
};

/// What an array of a file holds.
enum class Content : std::uint8_t {
  coordinate,  ///< one coordinate of all points
  iblank,      ///< the blanking values of all points
  parameters,  ///< adjacent flow parameters of the block
  variable,    ///< one variable at all points
  triplets,    ///< one value of the triplets at all points
};

/// The name of a kind or a content in JSON: "real8", "variable".
[[nodiscard]] const char* name_of(ValueKind kind);
[[nodiscard]] const char* name_of(Content content);  ///< @copydoc name_of

/// An array of a block in its file. Values at points have the order of the points of `Block`.
struct StoredArray {
  Content content = Content::coordinate;  ///< what it holds
  /// From 1: of the coordinate, the variable, the value of the triplets, or the first of the flow
  /// parameters.
  std::int32_t number = 1;
  ValueKind kind = ValueKind::real4;  ///< of each value
  std::int64_t count = 0;             ///< number of values
  /// The bytes of the values in file order; none for an array without values. The markers of
  /// sub-records divide an array into several ranges, possibly in the middle of a value.
  std::vector<ByteRange> ranges = {};

  /// The bytes from the value `first`, counted from 0, to the value before `last`.
  [[nodiscard]] std::vector<ByteRange> of(std::int64_t first, std::int64_t last) const;

  /// Compares all members.
  friend bool operator==(const StoredArray&, const StoredArray&) = default;
};

/// The arrays of a block in file order. Third coordinates and momenta that a file of two dimensions
/// leaves out, and older time levels, are not among them.
using BlockIndex = std::vector<StoredArray>;

/// The arrays of a file.
struct Index {
  ByteOrder byte_order = ByteOrder::native;  ///< of each value
  Extents extents = {};                      ///< of all blocks
  std::vector<BlockIndex> blocks = {};       ///< in file order
};

}  // namespace p3dgrid

#pragma GCC visibility pop
