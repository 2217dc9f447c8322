#include "recordio/unformatted_record.hpp"

#include <algorithm>
#include <cassert>
#include <limits>
#include <string>

#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

std::int64_t subrecord_limit = default_subrecord_limit;

bool has_markers(const p3dgrid::Coding& coding) {
  return coding.encoding == p3dgrid::Encoding::unformatted;
}

bool has_wide_markers(const p3dgrid::Coding& coding) {
  return coding.marker_bytes == p3dgrid::MarkerBytes::eight;
}

}  // namespace

std::int64_t read_marker(InputFile& file, const p3dgrid::Coding& coding) {
  return has_wide_markers(coding) ? read_integer<std::int64_t>(file, coding.byte_order)
                                  : read_integer<std::int32_t>(file, coding.byte_order);
}

void set_subrecord_limit(std::int64_t new_limit) {
  subrecord_limit = std::clamp<std::int64_t>(new_limit, 1, default_subrecord_limit);
}

PayloadReader::PayloadReader(InputFile& file, const p3dgrid::Coding& coding)
    : file_(file), coding_(coding) {
  if (!has_markers(coding)) {
    subrecord_end_ = std::numeric_limits<std::int64_t>::max();
    payload_ = subrecord_left();
    return;
  }
  if (file_.at_end()) {
    throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "a record"};
  }
  begin_subrecord();
}

void PayloadReader::begin_subrecord() {
  const std::int64_t at = file_.offset();
  const std::int64_t marker = read_marker(file_, coding_);
  const bool is_length = has_wide_markers(coding_)
                             ? is_wide_length(marker)
                             : marker != std::numeric_limits<std::int32_t>::min();
  if (!is_length) {
    throw ReadError{status_error, at, "the marker " + std::to_string(marker), "a record length"};
  }
  more_follow_ = marker < 0;
  subrecord_length_ = more_follow_ ? -marker : marker;
  subrecord_end_ = file_.offset() + subrecord_length_;
  payload_ += subrecord_length_;
}

void PayloadReader::end_subrecord() {
  const std::int64_t at = file_.offset();
  const std::int64_t marker = read_marker(file_, coding_);
  const std::int64_t expected = first_subrecord_ ? subrecord_length_ : -subrecord_length_;
  if (marker != expected) {
    throw ReadError{status_error, at, "the marker " + std::to_string(marker) + " behind a record",
                    std::to_string(expected) + " as before it"};
  }
  first_subrecord_ = false;
}

/// Number of the wanted bytes that are in the current sub-record; begins the next one if needed.
std::int64_t PayloadReader::next_run(std::int64_t wanted) {
  while (subrecord_left() == 0) {
    if (!more_follow_) {
      throw ReadError{status_error, file_.offset(),
                      "the end of a record of " + std::to_string(payload_) + " bytes",
                      std::to_string(wanted) + " more bytes in it"};
    }
    next_subrecord();
  }
  return std::min(wanted, subrecord_left());
}

/// Calls `take(bytes)` for each part of the payload that lies in one sub-record.
template <class Take>
void PayloadReader::for_each_run(std::int64_t bytes, Take take) {
  while (bytes > 0) {
    const std::int64_t run = next_run(bytes);
    take(run);
    bytes -= run;
  }
}

void PayloadReader::read(void* destination, std::int64_t bytes) {
  char* to = static_cast<char*>(destination);
  for_each_run(bytes, [&](std::int64_t run) {
    file_.read(to, run);
    to += run;
  });
}

void PayloadReader::discard(std::int64_t bytes) {
  for_each_run(bytes, [&](std::int64_t run) { file_.discard(run); });
}

void PayloadReader::locate(std::int64_t bytes, std::vector<p3dgrid::ByteRange>& places) {
  for_each_run(bytes, [&](std::int64_t run) {
    places.push_back({file_.offset(), run});
    file_.skip(run);
  });
}

void PayloadReader::next_subrecord() {
  file_.skip(subrecord_left());
  end_subrecord();
  begin_subrecord();
}

void PayloadReader::finish(RestOfRecord rest) {
  if (!has_markers(coding_)) return;
  const std::int64_t at = file_.offset();
  const std::int64_t read = bytes_read();
  while (more_follow_) next_subrecord();
  if (rest == RestOfRecord::refused && payload_ != read) {
    throw ReadError{status_error, at, "a record of " + std::to_string(payload_) + " bytes",
                    "one of " + std::to_string(read)};
  }
  file_.skip(subrecord_left());
  end_subrecord();
}

PayloadWriter::PayloadWriter(OutputFile& file, const p3dgrid::Coding& coding, std::int64_t payload)
    : file_(file), coding_(coding), payload_left_(payload) {
  begin_subrecord();
}

void PayloadWriter::write_marker(std::int64_t marker) {
  if (!has_markers(coding_)) return;
  const auto write = [&](auto value) {
    if (needs_swap(coding_.byte_order)) swap_bytes(&value, 1);
    file_.write(&value, sizeof value);
  };
  has_wide_markers(coding_) ? write(marker) : write(static_cast<std::int32_t>(marker));
}

void PayloadWriter::begin_subrecord() {
  const bool splits = has_markers(coding_) && !has_wide_markers(coding_);
  subrecord_length_ = subrecord_left_ =
      splits ? std::min(payload_left_, subrecord_limit) : payload_left_;
  payload_left_ -= subrecord_length_;
  write_marker(payload_left_ > 0 ? -subrecord_length_ : subrecord_length_);
}

void PayloadWriter::end_subrecord() {
  write_marker(first_subrecord_ ? subrecord_length_ : -subrecord_length_);
  first_subrecord_ = false;
}

/// Calls `take(bytes)` for each part of the payload that lies in one sub-record.
template <class Take>
void PayloadWriter::for_each_run(std::int64_t bytes, Take take) {
  while (bytes > 0) {
    if (subrecord_left_ == 0) {
      end_subrecord();
      begin_subrecord();
    }
    const std::int64_t run = std::min(bytes, subrecord_left_);
    take(run);
    bytes -= run;
    subrecord_left_ -= run;
  }
}

void PayloadWriter::write(const void* source, std::int64_t bytes) {
  const char* from = static_cast<const char*>(source);
  for_each_run(bytes, [&](std::int64_t run) {
    file_.write(from, run);
    from += run;
  });
}

void PayloadWriter::leave(std::int64_t bytes) {
  for_each_run(bytes, [&](std::int64_t run) { file_.leave(run); });
}

void PayloadWriter::finish() {
  assert(subrecord_left_ == 0 && payload_left_ == 0);
  end_subrecord();
}

}  // namespace mod_p3dgrid::recordio
