#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {

/// How one value is stored in an unformatted or binary file. Text knows no kinds.
enum class FileKind : std::uint8_t { integer4, real4, real8 };

[[nodiscard]] constexpr std::int64_t bytes_of(FileKind kind) {
  return kind == FileKind::real8 ? 8 : 4;
}

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

/// One entry of a record list: `rows` times `count` values, row after row. Value i of row r lies
/// at element `r + i * stride` of `memory`, so that a row is a line of a Fortran array whose first
/// extent is `stride`. Dropped values have no memory: they are read, checked and forgotten.
///
/// The values in memory have the kind `memory_kind`; in an unformatted or binary file they have
/// `file_kind`. Text is read into the kind in memory; written, a double that is to be `real4` and
/// that single precision can hold stands there as that single.
///
/// Values may pass through a staging array of kind `file_kind` on their way between an unformatted
/// or binary file and memory. It has room for all of them; they pass through its beginning, piece
/// after piece, so that the rest of it is never touched and costs nothing.
/// @tparam Memory  `void` for a list to read into, `const void` for a list to write from.
template <class Memory>
struct Values {
  FileKind file_kind;
  FileKind memory_kind;
  Memory* memory;
  std::int64_t rows;
  std::int64_t stride;
  std::int64_t count;
  bool drop = false;
  void* staging = nullptr;           ///< null for none
  bool zero_where_left_out = false;  ///< what a value left out of text sets; else it sets nothing

  [[nodiscard]] std::int64_t bytes() const { return rows * count * bytes_of(file_kind); }
};

/// What one record holds, in order. The operations build these lists; the encodings carry them out.
template <class Memory>
using RecordList = std::vector<Values<Memory>>;
using ReadList = RecordList<void>;
using WriteList = RecordList<const void>;

template <class T>
using MemoryOf = std::conditional_t<std::is_const_v<T>, const void, void>;

/// `count` values that lie next to each other.
template <class T>
[[nodiscard]] Values<MemoryOf<T>> values(T* memory, std::int64_t count) {
  return {kind_of<T>(), kind_of<T>(), memory, 1, 1, std::max<std::int64_t>(0, count)};
}

/// `rows` lines of an array of first extent `stride`, `count` values each; `memory` is the first
/// value of the first line.
template <class T>
[[nodiscard]] Values<MemoryOf<T>> lines(T* memory, std::int64_t rows, std::int64_t stride,
                                        std::int64_t count) {
  return {kind_of<T>(), kind_of<T>(),
          memory,       std::max<std::int64_t>(0, rows),
          stride,       std::max<std::int64_t>(0, count)};
}

/// One value.
template <class T>
[[nodiscard]] Values<MemoryOf<T>> scalar(T& value) {
  return values(&value, 1);
}

/// The same values, stored as `file_kind`.
template <class Memory>
[[nodiscard]] Values<Memory> stored_as(FileKind file_kind, Values<Memory> entry) {
  entry.file_kind = file_kind;
  return entry;
}

/// The same values, which pass through the array `staging` and are stored as it keeps them; an
/// empty one changes nothing. Without room for all of them they pass through other memory.
template <class Memory, class Staging>
[[nodiscard]] Values<Memory> by_way_of(array_view<Staging, 2> staging, Values<Memory> entry) {
  if (staging.data() == nullptr) return entry;
  entry.file_kind = kind_of<Staging>();
  const bool has_room = entry.rows * entry.count <= staging.extent(1) * staging.extent(2);
  entry.staging = has_room ? staging.data() : nullptr;
  return entry;
}

/// The same values, of which those that are left out of text are 0 once they have been read. Saves
/// clearing an array that may be much larger than what there is to read into it.
template <class Memory>
[[nodiscard]] Values<Memory> zero_where_left_out(Values<Memory> entry) {
  entry.zero_where_left_out = true;
  return entry;
}

/// One real that is stored as `file_kind` and kept in double precision.
template <class Double>
[[nodiscard]] Values<MemoryOf<Double>> real_scalar(Double& value, FileKind file_kind) {
  static_assert(std::is_same_v<std::remove_const_t<Double>, double>);
  return stored_as(file_kind, scalar(value));
}

/// `count` values that are read, checked and dropped.
[[nodiscard]] inline Values<void> dropped(FileKind kind, std::int64_t count) {
  return {kind, kind, nullptr, 1, 1, std::max<std::int64_t>(0, count), true};
}

/// Bytes that the list takes in an unformatted or binary file, without markers.
template <class Memory>
[[nodiscard]] std::int64_t bytes_of(const RecordList<Memory>& list) {
  std::int64_t bytes = 0;
  for (const auto& entry : list) bytes += entry.bytes();
  return bytes;
}

}  // namespace mod_p3dgrid::recordio
