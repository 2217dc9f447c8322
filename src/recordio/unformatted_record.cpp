#include "recordio/unformatted_record.hpp"

#include <algorithm>
#include <cassert>
#include <limits>
#include <string>

#include "recordio/byte_order.hpp"
#include "recordio/read_error.hpp"

namespace mod_p3dgrid::recordio {
namespace {

std::int64_t limit = default_subrecord_limit;

}  // namespace

std::int64_t subrecord_limit() {
  return limit;
}

void set_subrecord_limit(std::int64_t new_limit) {
  limit = std::clamp<std::int64_t>(new_limit, 1, default_subrecord_limit);
}

UnformattedRecordReader::UnformattedRecordReader(InputFile& file, std::endian order)
    : file_(file), order_(order) {
  if (file_.at_end()) {
    throw ReadError{status_end_of_file, file_.offset(), "the end of the file", "a record"};
  }
  begin_piece();
}

Marker UnformattedRecordReader::read_marker() {
  Marker marker;
  file_.read(&marker, sizeof marker);
  if (is_foreign(order_)) reverse_bytes(&marker, 1);
  return marker;
}

void UnformattedRecordReader::begin_piece() {
  const std::int64_t at = file_.offset();
  const Marker marker = read_marker();
  if (marker == std::numeric_limits<Marker>::min()) {
    throw ReadError{status_error, at, "the marker " + std::to_string(marker), "a record length"};
  }
  more_follow_ = marker < 0;
  piece_length_ = more_follow_ ? -std::int64_t{marker} : marker;
  piece_end_ = file_.offset() + piece_length_;
  payload_ += piece_length_;
}

void UnformattedRecordReader::end_piece() {
  const std::int64_t at = file_.offset();
  const Marker marker = read_marker();
  const std::int64_t expected = first_piece_ ? piece_length_ : -piece_length_;
  if (marker != expected) {
    throw ReadError{status_error, at, "the marker " + std::to_string(marker) + " behind a record",
                    std::to_string(expected) + " as before it"};
  }
  first_piece_ = false;
}

/// Bytes, of those wanted, that no marker interrupts.
std::int64_t UnformattedRecordReader::next_run(std::int64_t wanted) {
  while (piece_left() == 0) {
    if (!more_follow_) {
      throw ReadError{status_error, file_.offset(),
                      "the end of a record of " + std::to_string(payload_) + " bytes",
                      std::to_string(wanted) + " more bytes in it"};
    }
    next_piece();
  }
  return std::min(wanted, piece_left());
}

void UnformattedRecordReader::read(void* destination, std::int64_t bytes) {
  char* to = static_cast<char*>(destination);
  while (bytes > 0) {
    const std::int64_t run = next_run(bytes);
    file_.read(to, run);
    to += run;
    bytes -= run;
  }
}

void UnformattedRecordReader::discard(std::int64_t bytes) {
  while (bytes > 0) {
    const std::int64_t run = next_run(bytes);
    file_.discard(run);
    bytes -= run;
  }
}

void UnformattedRecordReader::expect_end() {
  const std::int64_t at = file_.offset();
  const std::int64_t read = bytes_read();
  while (more_follow_) next_piece();
  if (payload_ == read) return;
  throw ReadError{status_error, at, "a record of " + std::to_string(payload_) + " bytes",
                  "one of " + std::to_string(read)};
}

void UnformattedRecordReader::next_piece() {
  file_.skip(piece_left());
  end_piece();
  begin_piece();
}

void UnformattedRecordReader::finish() {
  while (more_follow_) next_piece();
  file_.skip(piece_left());
  end_piece();
}

UnformattedRecordWriter::UnformattedRecordWriter(OutputFile& file, std::endian order,
                                                 std::int64_t payload)
    : file_(file), order_(order), payload_left_(payload) {
  begin_piece();
}

void UnformattedRecordWriter::write_marker(Marker marker) {
  if (is_foreign(order_)) reverse_bytes(&marker, 1);
  file_.write(&marker, sizeof marker);
}

void UnformattedRecordWriter::begin_piece() {
  piece_length_ = piece_left_ = std::min(payload_left_, subrecord_limit());
  payload_left_ -= piece_length_;
  const Marker length = static_cast<Marker>(piece_length_);
  write_marker(payload_left_ > 0 ? -length : length);
}

void UnformattedRecordWriter::end_piece() {
  const Marker length = static_cast<Marker>(piece_length_);
  write_marker(first_piece_ ? length : -length);
  first_piece_ = false;
}

void UnformattedRecordWriter::write(const void* source, std::int64_t bytes) {
  const char* from = static_cast<const char*>(source);
  while (bytes > 0) {
    if (piece_left_ == 0) {
      end_piece();
      begin_piece();
    }
    const std::int64_t run = std::min(bytes, piece_left_);
    file_.write(from, run);
    from += run;
    bytes -= run;
    piece_left_ -= run;
  }
}

void UnformattedRecordWriter::finish() {
  assert(piece_left_ == 0 && payload_left_ == 0);
  end_piece();
}

}  // namespace mod_p3dgrid::recordio
