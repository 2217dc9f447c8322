#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "p3dgrid/form.hpp"
#include "p3dgrid/index.hpp"
#include "recordio/input_file.hpp"
#include "recordio/output_file.hpp"
#include "recordio/record_list.hpp"

/// Framing of unformatted records, as common Fortran run-time libraries write them: a marker of 4
/// or 8 bytes with the length of the payload before and after it. A record that is too long for a
/// marker of 4 bytes is a chain of sub-records. The marker before a sub-record is negative if
/// another follows; the marker after it is negative if another precedes. A record of a binary file
/// is a payload without markers.
namespace mod_p3dgrid::recordio {

/// Whether values of this order must be byte-swapped in memory.
[[nodiscard]] constexpr bool needs_swap(std::endian order) {
  return order != std::endian::native;
}

/// Byte-swaps each value. Compilers vectorise the loop.
template <class T>
void swap_bytes(T* values, std::int64_t count) {
  using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  static_assert(sizeof(T) == sizeof(Word));
  for (std::int64_t i = 0; i < count; ++i) {
    const auto word = std::bit_cast<Word>(values[i]);
    if constexpr (sizeof(T) == 8) {
      values[i] = std::bit_cast<T>(__builtin_bswap64(word));
    } else {
      values[i] = std::bit_cast<T>(__builtin_bswap32(word));
    }
  }
}

/// An integer at the position of the file.
template <class Integer>
[[nodiscard]] Integer read_integer(InputFile& file, std::endian order) {
  Integer value;
  file.read(&value, sizeof value);
  if (needs_swap(order)) swap_bytes(&value, 1);
  return value;
}

/// The marker at the position of the file.
[[nodiscard]] std::int64_t read_marker(InputFile& file, const p3dgrid::Coding& coding);

/// Whether a marker of 8 bytes can be a length. Offsets plus a length fit 64 bits.
[[nodiscard]] constexpr bool is_wide_length(std::int64_t marker) {
  return marker >= 0 && marker <= std::int64_t{1} << 62;
}

/// Longest payload of one sub-record.
inline constexpr std::int64_t default_subrecord_limit = 2'147'483'639;

/// Lowers the limit of the writer, at least to 1, to test splitting on small files. The reader
/// accepts sub-records of any length.
void set_subrecord_limit(std::int64_t limit);

/// Reads one unformatted or binary record. Its payload is one sequence of bytes, whatever its
/// sub-records.
class PayloadReader {
 public:
  /// Reads the first marker.
  PayloadReader(InputFile& file, const p3dgrid::Coding& coding);

  /// Reads values as `Values` describes them. After a failed read every complete value is stored.
  void read_values(const Values<void>& entry);

  /// Copies payload bytes. If the record or the file holds fewer, copies those and throws
  /// `ReadError`.
  void read(void* destination, std::int64_t bytes);
  /// Reads payload bytes and discards them. Throws `ReadError` if there are fewer.
  void discard(std::int64_t bytes);
  /// Skips payload bytes and appends their byte ranges. Throws `ReadError` if there are fewer.
  void locate(std::int64_t bytes, std::vector<p3dgrid::ByteRange>& places);

  [[nodiscard]] std::int64_t bytes_read() const { return payload_ - subrecord_left(); }

  [[nodiscard]] bool surely_holds(std::int64_t bytes) const {
    return bytes <= subrecord_left() && file_.surely_holds(bytes);
  }

  /// @name Random access
  /// As in `InputFile`, within one sub-record.
  /// @{
  [[nodiscard]] bool allows_random_access(std::int64_t bytes) const {
    return bytes <= subrecord_left() && file_.allows_random_access(bytes);
  }
  void read_ahead(std::int64_t distance, void* destination, std::int64_t bytes) {
    file_.read_ahead(distance, destination, bytes);
  }
  void skip(std::int64_t bytes) { file_.skip(next_run(bytes)); }
  /// @}

  /// Skips the rest of an unformatted record and checks its last marker. Throws `ReadError`.
  void finish(RestOfRecord rest);

 private:
  template <class Take>
  void for_each_run(std::int64_t bytes, Take take);
  void begin_subrecord();
  void end_subrecord();
  void next_subrecord();
  [[nodiscard]] std::int64_t next_run(std::int64_t wanted);
  [[nodiscard]] std::int64_t subrecord_left() const { return subrecord_end_ - file_.offset(); }

  InputFile& file_;
  p3dgrid::Coding coding_;
  std::int64_t payload_ = 0;  ///< bytes of the sub-records begun so far
  std::int64_t subrecord_length_ = 0;
  std::int64_t subrecord_end_ = 0;  ///< offset of the marker after it
  bool first_subrecord_ = true;
  bool more_follow_ = false;
};

/// Writes one unformatted or binary record of known length.
class PayloadWriter {
 public:
  /// Writes the first marker.
  PayloadWriter(OutputFile& file, const p3dgrid::Coding& coding, std::int64_t payload);

  void write_values(const Values<const void>& entry);
  void write(const void* source, std::int64_t bytes);
  /// Leaves a gap for payload bytes that are written later by other means.
  void leave(std::int64_t bytes);

  /// @name Random access
  /// As in `OutputFile`, within one sub-record.
  /// @{
  [[nodiscard]] bool allows_random_access(std::int64_t bytes) {
    return bytes <= subrecord_left_ && file_.allows_random_access(bytes);
  }
  void write_ahead(std::int64_t distance, const void* source, std::int64_t bytes) {
    file_.write_ahead(distance, source, bytes);
  }
  void skip(std::int64_t bytes) {
    file_.skip(bytes);
    subrecord_left_ -= bytes;
  }
  /// @}

  /// Writes the last marker. The announced payload must have been written.
  void finish();

 private:
  template <class Take>
  void for_each_run(std::int64_t bytes, Take take);
  void begin_subrecord();
  void end_subrecord();
  void write_marker(std::int64_t marker);

  OutputFile& file_;
  p3dgrid::Coding coding_;
  std::int64_t payload_left_;  ///< of sub-records not begun yet
  std::int64_t subrecord_length_ = 0;
  std::int64_t subrecord_left_ = 0;
  bool first_subrecord_ = true;
};

}  // namespace mod_p3dgrid::recordio
