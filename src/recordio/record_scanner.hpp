#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>

#include "recordio/input_file.hpp"

namespace mod_p3dgrid::recordio {

/// A record of an unformatted file, as its markers show it.
struct ScannedRecord {
  enum class State : std::uint8_t {
    sound,
    cut,     ///< the file ends inside
    broken,  ///< a marker behind a part of it is not the one before
  };

  std::int64_t offset = 0;  ///< of the marker before it
  std::int64_t end = 0;     ///< of the byte behind it, if it is sound
  std::int64_t length = 0;  ///< of its payload, by the markers before its sub-records
  State state = State::sound;
  bool has_many_subrecords = false;  ///< more than are followed
  std::string what = {};             ///< unless it is sound: what is wrong, as part of a sentence

  [[nodiscard]] bool sound() const { return state == State::sound; }
};

/// Goes through the records of an unformatted file by their markers, without their payload. Damage
/// is returned in the record; `ReadError` is thrown only if the system cannot read the file.
class RecordScanner {
 public:
  /// @param file  shared; the scanner seeks before each read, and other users must do the same
  /// @param size  length of the file in bytes
  RecordScanner(InputFile& file, std::endian order, std::int64_t size)
      : file_(file), order_(order), size_(size) {}

  /// The next record; none at the end of the file and behind one that is not sound.
  [[nodiscard]] std::optional<ScannedRecord> next();

 private:
  bool take_subrecord(ScannedRecord& record, bool first);

  InputFile& file_;
  std::endian order_;
  std::int64_t size_;
  std::int64_t at_ = 0;
};

/// The 32-bit integer at byte `offset` of a file; none where the file ends before it does.
[[nodiscard]] std::optional<std::int32_t> integer_at(InputFile& file, std::int64_t offset,
                                                     std::endian order);

}  // namespace mod_p3dgrid::recordio
