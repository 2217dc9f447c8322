#include "detect/record_list.hpp"

#include <cstdlib>
#include <optional>

#include "table.hpp"

namespace p3dgrid {
namespace {

std::uint64_t length_in(std::int32_t marker) {
  return static_cast<std::uint64_t>(std::abs(std::int64_t{marker}));
}

}  // namespace

const Record* RecordList::at(std::size_t n) {
  while (records_.size() <= n) {
    if (!records_.empty() && records_.back().state != Record::State::sound) return nullptr;
    if (end_ >= source_->size()) return nullptr;
    look_at_next();
  }
  return &records_[n];
}

void RecordList::look_at_next() {
  Record record{.offset = end_, .end = end_};
  bool first = true;
  while (take_piece(record, first)) first = false;
  if (record.state == Record::State::sound) end_ = record.end;
  records_.push_back(std::move(record));
}

/// Takes one piece of a record with its two markers; true when another piece follows.
bool RecordList::take_piece(Record& record, bool first) {
  const std::uint64_t begin = record.end;
  const auto head = source_->integer(begin, order_);
  if (!head) {
    record.state = Record::State::cut;
    record.what = "the file ends inside the marker at byte " + std::to_string(begin);
    return false;
  }
  const std::uint64_t length = length_in(*head);
  record.length += length;
  const std::uint64_t behind = begin + marker_bytes + length;
  const auto tail = source_->integer(behind, order_);
  if (!tail) {
    record.state = Record::State::cut;
    record.what = "its marker at byte " + std::to_string(begin) + " announces " +
                  counted(static_cast<std::int64_t>(length), "byte") +
                  ", and the file ends at byte " + std::to_string(source_->size());
    return false;
  }
  // Behind a piece that follows another the marker is negative.
  const std::int64_t expected =
      first ? static_cast<std::int64_t>(length) : -static_cast<std::int64_t>(length);
  if (*tail != expected) {
    record.state = Record::State::broken;
    record.what = "its marker at byte " + std::to_string(behind) + " says " +
                  std::to_string(*tail) + " where " + std::to_string(expected) +
                  " is expected, as at byte " + std::to_string(begin);
    return false;
  }
  record.end = behind + marker_bytes;
  return *head < 0;
}

}  // namespace p3dgrid
