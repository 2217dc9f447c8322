#pragma once

#include <bit>
#include <cstdint>

#include "recordio/input_file.hpp"
#include "recordio/output_file.hpp"
#include "recordio/record_markers.hpp"

namespace mod_p3dgrid::recordio {

/// One framed record being read: its payload as a run of bytes, whatever its sub-records.
class UnformattedRecordReader {
 public:
  /// Reads the first marker.
  /// @param order  byte order of the markers
  UnformattedRecordReader(InputFile& file, std::endian order);

  /// Moves payload bytes. Throws `ReadError` when the record or the file holds fewer, once it has
  /// moved those.
  void read(void* destination, std::int64_t bytes);
  /// Reads payload bytes and drops them.
  void discard(std::int64_t bytes);

  /// Payload bytes read so far.
  [[nodiscard]] std::int64_t bytes_read() const { return payload_ - piece_left(); }

  [[nodiscard]] bool surely_holds(std::int64_t bytes) const {
    return bytes <= piece_left() && file_.surely_holds(bytes);
  }

  /// @name Payload in any order
  /// As in `InputFile`, for payload that no marker interrupts.
  /// @{
  [[nodiscard]] bool lies_ahead(std::int64_t bytes) const {
    return bytes <= piece_left() && file_.lies_ahead(bytes);
  }
  void read_ahead(std::int64_t distance, void* destination, std::int64_t bytes) {
    file_.read_ahead(distance, destination, bytes);
  }
  void skip(std::int64_t bytes) { file_.skip(next_run(bytes)); }
  /// @}

  /// Throws `ReadError` if the payload goes on; it is gone through for its length.
  void expect_end();

  /// Skips the rest of the payload and checks the last marker.
  void finish();

 private:
  void begin_piece();
  void end_piece();
  void next_piece();
  [[nodiscard]] std::int64_t next_run(std::int64_t wanted);
  [[nodiscard]] Marker read_marker();
  [[nodiscard]] std::int64_t piece_left() const { return piece_end_ - file_.offset(); }

  InputFile& file_;
  std::endian order_;
  std::int64_t payload_ = 0;  ///< bytes of the pieces begun so far
  std::int64_t piece_length_ = 0;
  std::int64_t piece_end_ = 0;  ///< byte of the file behind the piece
  bool first_piece_ = true;
  bool more_follow_ = false;
};

/// One framed record being written; its length is known from the start.
class UnformattedRecordWriter {
 public:
  /// Writes the first marker.
  /// @param order  byte order of the markers
  UnformattedRecordWriter(OutputFile& file, std::endian order, std::int64_t payload);

  void write(const void* source, std::int64_t bytes);

  /// @name Payload in any order
  /// As in `OutputFile`, for payload that no marker interrupts.
  /// @{
  [[nodiscard]] bool lies_ahead(std::int64_t bytes) {
    return bytes <= piece_left_ && file_.lies_ahead(bytes);
  }
  void write_ahead(std::int64_t distance, const void* source, std::int64_t bytes) {
    file_.write_ahead(distance, source, bytes);
  }
  void skip(std::int64_t bytes) {
    file_.skip(bytes);
    piece_left_ -= bytes;
  }
  /// @}

  /// Writes the last marker. Exactly the payload announced must have been written.
  void finish();

 private:
  void begin_piece();
  void end_piece();
  void write_marker(Marker marker);

  OutputFile& file_;
  std::endian order_;
  std::int64_t payload_left_;  ///< of pieces not begun yet
  std::int64_t piece_length_ = 0;
  std::int64_t piece_left_ = 0;
  bool first_piece_ = true;
};

}  // namespace mod_p3dgrid::recordio
