#include "recordio/record_scanner.hpp"

#include <cstdlib>

#include "recordio/byte_order.hpp"
#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

/// Sub-records have about 2 GiB. A longer chain is damage, and would take long to scan.
constexpr int most_subrecords = 65536;

}  // namespace

std::optional<std::int32_t> integer_at(InputFile& file, std::int64_t offset, std::endian order) {
  std::int32_t value;
  try {
    file.seek(offset);
    file.read(&value, sizeof value);
  } catch (const ReadError& error) {
    if (error.status == status_end_of_file) return std::nullopt;
    throw;
  }
  if (needs_swap(order)) swap_bytes(&value, 1);
  return value;
}

std::optional<ScannedRecord> RecordScanner::next() {
  if (at_ >= size_) return std::nullopt;
  ScannedRecord record{.offset = at_, .payload = at_ + marker_bytes, .end = at_};
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
  const std::int64_t begin = record.end;
  const auto head = integer_at(file_, begin, coding_.byte_order);
  if (!head) {
    record.state = ScannedRecord::State::cut;
    record.what = "the file ends inside the marker at byte " + std::to_string(begin);
    return false;
  }
  const std::int64_t length = std::abs(std::int64_t{*head});
  record.length += length;
  const std::int64_t behind = begin + marker_bytes + length;
  const auto tail =
      behind <= size_ - marker_bytes ? integer_at(file_, behind, coding_.byte_order) : std::nullopt;
  if (!tail) {
    record.state = ScannedRecord::State::cut;
    record.what = "its marker at byte " + std::to_string(begin) + " announces " +
                  std::to_string(length) + (length == 1 ? " byte" : " bytes") +
                  ", and the file ends at byte " + std::to_string(size_);
    return false;
  }
  const std::int64_t expected = first ? length : -length;
  if (*tail != expected) {
    record.state = ScannedRecord::State::broken;
    record.what = "its marker at byte " + std::to_string(behind) + " says " +
                  std::to_string(*tail) + " where " + std::to_string(expected) +
                  " is expected, as at byte " + std::to_string(begin);
    return false;
  }
  record.end = behind + marker_bytes;
  return *head < 0;
}

}  // namespace mod_p3dgrid::recordio
