#include "recordio/record_scanner.hpp"

#include <cstdlib>

#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Sub-records have about 2 GiB. A longer chain is damage, and would take long to scan.
constexpr int most_subrecords = 65536;

/// Runs `read` at a byte; none if the file ends before.
template <class Read>
auto at_byte(InputFile& file, std::int64_t offset, Read read) -> std::optional<decltype(read())> {
  try {
    file.seek(offset);
    return read();
  } catch (const ReadError& error) {
    if (error.status == status_end_of_file) return std::nullopt;
    throw;
  }
}

}  // namespace

std::optional<std::int32_t> integer_at(InputFile& file, std::int64_t offset, std::endian order) {
  return at_byte(file, offset, [&] { return read_integer<std::int32_t>(file, order); });
}

std::optional<std::int64_t> marker_at(InputFile& file, std::int64_t offset,
                                      const p3dgrid::Coding& coding) {
  return at_byte(file, offset, [&] { return read_marker(file, coding); });
}

std::optional<ScannedRecord> RecordScanner::next() {
  if (at_ >= size_) return std::nullopt;
  ScannedRecord record{.offset = at_, .payload = at_ + marker_size(coding_), .end = at_};
  int subrecords = 0;
  while (take_subrecord(record, subrecords == 0)) {
    if (++subrecords < most_subrecords) continue;
    record.state = ScannedRecord::State::broken;
    record.has_many_subrecords = true;
    record.what = "it has more than " + std::to_string(most_subrecords) + " sub-records";
    break;
  }
  at_ = record.sound() ? record.end : size_;
  return record;
}

/// Scans one sub-record with its two markers; true if another follows.
bool RecordScanner::take_subrecord(ScannedRecord& record, bool first) {
  using State = ScannedRecord::State;
  const auto its_marker = [](std::int64_t at) {
    return "its marker at byte " + std::to_string(at);
  };
  const auto damaged = [&](State state, std::string what) {
    record.state = state;
    record.what = std::move(what);
    return false;
  };
  const std::int64_t begin = record.end;
  const std::int64_t marker = marker_size(coding_);
  const auto head = marker_at(file_, begin, coding_);
  if (!head) {
    return damaged(State::cut, "the file ends inside the marker at byte " + std::to_string(begin));
  }
  if (coding_.marker_bytes == p3dgrid::MarkerBytes::eight && !is_wide_length(*head)) {
    return damaged(State::broken,
                   its_marker(begin) + " says " + std::to_string(*head) + ", which is no length");
  }
  const std::int64_t length = std::abs(*head);
  record.length += length;
  const std::int64_t behind = begin + marker + length;
  const auto tail = behind <= size_ - marker ? marker_at(file_, behind, coding_) : std::nullopt;
  if (!tail) {
    return damaged(State::cut, its_marker(begin) + " announces " + std::to_string(length) +
                                   (length == 1 ? " byte" : " bytes") +
                                   ", and the file ends at byte " + std::to_string(size_));
  }
  const std::int64_t expected = first ? length : -length;
  if (*tail != expected) {
    return damaged(State::broken, its_marker(behind) + " says " + std::to_string(*tail) +
                                      " where " + std::to_string(expected) +
                                      " is expected, as at byte " + std::to_string(begin));
  }
  record.end = behind + marker;
  return *head < 0;
}

}  // namespace mod_p3dgrid::recordio
