#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>

#include "p3dgrid/form.hpp"
#include "recordio/input_file.hpp"
#include "recordio/unformatted_record.hpp"

namespace mod_p3dgrid::recordio {

/// A record of an unformatted file according to its markers.
struct ScannedRecord {
  enum class State : std::uint8_t {
    sound,
    cut,     ///< the file ends inside it
    broken,  ///< a marker is no length or differs from the other, or too many sub-records
  };

  std::int64_t offset = 0;   ///< of its first marker
  std::int64_t payload = 0;  ///< of its first byte behind that marker
  std::int64_t end = 0;      ///< offset of the next record, if it is sound
  std::int64_t length = 0;   ///< of its payload, by the markers before its sub-records
  State state = State::sound;
  bool has_many_subrecords = false;  ///< more than the scanner follows
  std::string what = {};             ///< the damage as part of a sentence, unless it is sound

  [[nodiscard]] bool sound() const { return state == State::sound; }
};

/// Scans the markers of an unformatted file. Damage is returned in the record; `ReadError` is
/// thrown only if the system cannot read the file.
class RecordScanner {
 public:
  /// @param file  shared: each user must seek before it reads
  /// @param size  length of the file in bytes
  RecordScanner(InputFile& file, const p3dgrid::Coding& coding, std::int64_t size)
      : file_(file), coding_(coding), size_(size) {}

  /// The next record; none at the end of the file and after a record that is not sound.
  [[nodiscard]] std::optional<ScannedRecord> next();

 private:
  bool take_subrecord(ScannedRecord& record, bool first);

  InputFile& file_;
  p3dgrid::Coding coding_;
  std::int64_t size_;
  std::int64_t at_ = 0;
};

/// The 32-bit integer at byte `offset`; none if the file ends before its last byte.
[[nodiscard]] std::optional<std::int32_t> integer_at(InputFile& file, std::int64_t offset,
                                                     std::endian order);
/// The same for a record marker.
[[nodiscard]] std::optional<std::int64_t> marker_at(InputFile& file, std::int64_t offset,
                                                    const p3dgrid::Coding& coding);

}  // namespace mod_p3dgrid::recordio
