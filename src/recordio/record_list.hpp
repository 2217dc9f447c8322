#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/logical.hpp"
#include "p3dgrid/index.hpp"

namespace mod_p3dgrid::recordio {

using FileKind = p3dgrid::ValueKind;
using p3dgrid::bytes_of;

template <class T>
[[nodiscard]] constexpr FileKind kind_of() {
  using Value = std::remove_const_t<T>;
  static_assert(std::is_same_v<Value, integer> || std::is_same_v<Value, float> ||
                    std::is_same_v<Value, double>,
                "files hold integers and reals only");
  return std::is_same_v<Value, integer> ? FileKind::integer4
         : std::is_same_v<Value, float> ? FileKind::real4
                                        : FileKind::real8;
}

/// One entry of a record list: `rows` times `count` values, row after row. Value i of row r is
/// element `r + i * stride` of `memory`, a Fortran array whose first extent is `stride`. Dropped
/// values have no memory: they are read, checked and discarded.
///
/// Values have the kind `memory_kind` in memory and `file_kind` in an unformatted or binary file.
/// Text is read into `memory_kind`. A double with `file_kind` `real4` is written to text with the
/// digits of a single if that has the same value.
///
/// With a staging array of kind `file_kind`, values of unformatted and binary files are converted
/// there. It has room for all of them, but only its beginning is used, piece by piece, so the rest
/// costs no memory.
/// @tparam Memory  `void` for reading, `const void` for writing
template <class Memory>
struct Values {
  FileKind file_kind;
  FileKind memory_kind;
  Memory* memory;
  std::int64_t rows;
  std::int64_t stride;
  std::int64_t count;
  bool drop = false;
  void* staging = nullptr;  ///< null for none
  /// Values left out of text become 0 rather than keep what `memory` holds. This saves clearing an
  /// array that may be much larger than the text.
  bool zero_where_left_out = false;

  [[nodiscard]] std::int64_t bytes() const { return rows * count * bytes_of(file_kind); }
};

/// The contents of one record in order.
template <class Memory>
using RecordList = std::vector<Values<Memory>>;
using ReadList = RecordList<void>;
using WriteList = RecordList<const void>;

template <class T>
using MemoryOf = std::conditional_t<std::is_const_v<T>, const void, void>;

/// Treatment of values in an unformatted record that the list does not ask for.
enum class RestOfRecord : std::uint8_t { skipped, refused };

/// `count` contiguous values.
template <class T>
[[nodiscard]] Values<MemoryOf<T>> values(T* memory, std::int64_t count) {
  return {kind_of<T>(), kind_of<T>(), memory, 1, 1, std::max<std::int64_t>(0, count)};
}

/// `rows` rows of an array whose first extent is `stride`, `count` values each. `memory` points to
/// the first value of the first row.
template <class T>
[[nodiscard]] Values<MemoryOf<T>> lines(T* memory, std::int64_t rows, std::int64_t stride,
                                        std::int64_t count) {
  return {kind_of<T>(), kind_of<T>(),
          memory,       std::max<std::int64_t>(0, rows),
          stride,       std::max<std::int64_t>(0, count)};
}

template <class T>
[[nodiscard]] Values<MemoryOf<T>> scalar(T& value) {
  return values(&value, 1);
}

/// The entry with another kind in the file.
template <class Memory>
[[nodiscard]] Values<Memory> stored_as(FileKind file_kind, Values<Memory> entry) {
  entry.file_kind = file_kind;
  return entry;
}

/// The entry with a staging array and its kind in the file. An empty array changes nothing; one
/// without room for all values only sets the kind.
template <class Memory, class Staging>
[[nodiscard]] Values<Memory> through_staging(array_view<Staging, 2> staging, Values<Memory> entry) {
  if (staging.data() == nullptr) return entry;
  entry.file_kind = kind_of<Staging>();
  const bool has_room = entry.rows * entry.count <= staging.extent(1) * staging.extent(2);
  entry.staging = has_room ? staging.data() : nullptr;
  return entry;
}

/// `count` values that are read, checked and discarded.
[[nodiscard]] inline Values<void> dropped(FileKind kind, std::int64_t count) {
  return {kind, kind, nullptr, 1, 1, std::max<std::int64_t>(0, count), true};
}

/// Bytes of the list in an unformatted or binary file, without markers.
template <class Memory>
[[nodiscard]] std::int64_t bytes_of(const RecordList<Memory>& list) {
  std::int64_t bytes = 0;
  for (const auto& entry : list) bytes += entry.bytes();
  return bytes;
}

}  // namespace mod_p3dgrid::recordio
