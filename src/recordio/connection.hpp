#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "p3dgrid/form.hpp"
#include "recordio/input_file.hpp"
#include "recordio/list_reader.hpp"
#include "recordio/list_writer.hpp"
#include "recordio/output_file.hpp"
#include "recordio/read_error.hpp"
#include "recordio/record_list.hpp"
#include "recordio/unformatted_record.hpp"

namespace mod_p3dgrid::recordio {

using p3dgrid::Coding;
using p3dgrid::Encoding;

/// How the values that a header announces are stored.
enum class Claim : std::uint8_t {
  one_record,        ///< in one record, which must be complete
  records,           ///< in several records; text has at least one byte for each value
  may_be_truncated,  ///< a truncated file may hold only a sixteenth of them
};

/// One record that is read entry by entry. Functions throw `ReadError`.
class RecordInput {
 public:
  /// @param lines  number of lines of text before the record; updated
  RecordInput(InputFile& file, const Coding& coding, std::int64_t& lines);

  void read(const Values<void>& entry);
  /// Skips bytes of an unformatted or binary record and appends their byte ranges.
  void locate(std::int64_t bytes, std::vector<p3dgrid::ByteRange>& places);
  void finish(RestOfRecord rest);

 private:
  using Record = std::variant<PayloadReader, ListReader>;
  Record record_;
};

/// One record that is written entry by entry. Functions throw `SystemError`.
class RecordOutput {
 public:
  /// @param bytes  length of an unformatted or binary record
  RecordOutput(OutputFile& file, const Coding& coding, std::int64_t bytes);

  void write(const Values<const void>& entry);
  /// Leaves a gap for bytes of an unformatted or binary record.
  void leave(std::int64_t bytes);
  void finish();

 private:
  using Record = std::variant<PayloadWriter, ListWriter>;
  Record record_;
};

/// Reads one record of a file. Throws `ReadError`.
/// @param lines  number of lines of text before the record; updated
void read_record(InputFile& file, const Coding& coding, const ReadList& list, RestOfRecord rest,
                 std::int64_t& lines);

/// A file connected to a unit: reads and writes record lists in the encoding of the file.
class Connection {
 public:
  /// Opens the file. Throws `SystemError`.
  Connection(std::string path, const Coding& coding, OpenStatus status);

  /// Reads one record. Throws `ReadError`.
  void read(const ReadList& list, RestOfRecord rest);

  /// Begins a record that is read in parts. The connection must outlive it.
  [[nodiscard]] RecordInput begin_read();
  /// Begins a record of `bytes` bytes that is written in parts. The connection must outlive it.
  [[nodiscard]] RecordOutput begin_record(std::int64_t bytes);

  /// Skips a record that holds the list. Throws `ReadError`.
  void skip(const ReadList& list);

  /// Throws `ReadError` if something is left to read.
  void expect_end();

  [[nodiscard]] bool is_input() const { return input_.has_value(); }

  /// Writes one record. Throws `SystemError`.
  void write(const WriteList& list);

  /// Gives up the old contents of the file that is written and returns it, for lines of text that
  /// are not list-directed records.
  [[nodiscard]] OutputFile& output();

  /// Flushes and closes a file that is written. Throws `SystemError`.
  void close();

  /// Whether the rest of the file can hold `values` values; true if its size is unknown. With
  /// `may_be_truncated`, up to 1 GiB is accepted without a check.
  [[nodiscard]] bool can_hold(std::int64_t values, FileKind kind, Claim claim) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::int64_t record() const { return record_; }
  [[nodiscard]] std::int64_t offset() const { return input_ ? input_->offset() : 0; }
  /// Current line of a text file, from 1; 0 for other files.
  [[nodiscard]] std::int64_t line() const { return is_text(coding_) ? lines_ + 1 : 0; }

 private:
  [[nodiscard]] InputFile& input_or_error();

  std::string path_;
  Coding coding_;
  std::optional<InputFile> input_;    ///< the file, if it is read
  std::optional<OutputFile> output_;  ///< the file, if it is written
  std::int64_t record_ = 0;           ///< records begun
  std::int64_t lines_ = 0;            ///< lines read
};

}  // namespace mod_p3dgrid::recordio
