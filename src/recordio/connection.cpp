#include "recordio/connection.hpp"

#include <utility>

#include "recordio/list_reader.hpp"
#include "recordio/list_writer.hpp"
#include "recordio/unformatted_record.hpp"
#include "recordio/value_transfer.hpp"

namespace mod_p3dgrid::recordio {
namespace {

constexpr std::size_t text_buffer_size = std::size_t{256} * 1024;
constexpr std::size_t byte_buffer_size = std::size_t{64} * 1024;

/// Arrays up to this size are allocated without a check of the file's length. Memory that nothing
/// is read into is never touched and costs only address space.
constexpr std::int64_t trusted_bytes = std::int64_t{1024} * 1024 * 1024;

/// A truncated file must hold at least 1/16 of the values that its header announces. With fewer the
/// header counts as damaged, and nothing is allocated.
constexpr std::int64_t most_truncation = 16;

}  // namespace

void read_record(InputFile& file, const Coding& coding, const ReadList& list, RestOfRecord rest,
                 std::int64_t& lines) {
  switch (coding.encoding) {
    case Encoding::unformatted: {
      UnformattedRecordReader record(file, coding);
      for (const auto& entry : list) read_values(record, coding.byte_order, entry);
      if (rest == RestOfRecord::refused) record.expect_end();
      return record.finish();
    }
    case Encoding::binary:
      for (const auto& entry : list) read_values(file, coding.byte_order, entry);
      return;
    case Encoding::formatted: {
      ListReader reader(file, lines);
      for (const auto& entry : list) reader.read_values(entry);
      return reader.finish();
    }
  }
}

Connection::Connection(std::string path, const Coding& coding, OpenStatus status)
    : path_(std::move(path)), coding_(coding) {
  if (status == OpenStatus::old) {
    file_.emplace<InputFile>(path_, is_text(coding_) ? text_buffer_size : byte_buffer_size);
  } else {
    file_.emplace<OutputFile>(path_,
                              status == OpenStatus::fresh ? Creation::fresh : Creation::replace);
  }
}

InputFile& Connection::input_or_error() {
  if (auto* const file = std::get_if<InputFile>(&file_)) return *file;
  throw ReadError{status_error, 0, "a file open for writing", "one open for reading"};
}

OutputFile& Connection::begin_write() {
  auto& file = std::get<OutputFile>(file_);
  file.begin();
  return file;
}

void Connection::read(const ReadList& list, RestOfRecord rest) {
  InputFile& file = input_or_error();
  ++record_;
  read_record(file, coding_, list, rest, lines_);
}

void Connection::expect_end() {
  InputFile& file = input_or_error();
  if (file.at_end()) return;
  ++record_;
  throw ReadError{status_error, file.offset(), "more records", "the end of the file"};
}

void Connection::write(const WriteList& list) {
  OutputFile& file = begin_write();
  ++record_;
  switch (coding_.encoding) {
    case Encoding::unformatted: {
      UnformattedRecordWriter record(file, coding_, bytes_of(list));
      for (const auto& entry : list) write_values(record, coding_.byte_order, entry);
      return record.finish();
    }
    case Encoding::binary:
      for (const auto& entry : list) write_values(file, coding_.byte_order, entry);
      return;
    case Encoding::formatted: {
      ListWriter writer(file);
      for (const auto& entry : list) writer.write_values(entry);
      return writer.finish();
    }
  }
}

void Connection::write_line(std::string_view line) {
  OutputFile& file = begin_write();
  file.write(line.data(), std::ssize(line));
  file.write("\n", 1);
}

void Connection::write_points(const WriteList& list, std::int64_t points) {
  recordio::write_points(begin_write(), list, points);
}

void Connection::close() {
  if (auto* const file = std::get_if<OutputFile>(&file_)) file->close();
}

bool Connection::can_hold(std::int64_t values, FileKind kind, Claim claim) const {
  const auto* const file = std::get_if<InputFile>(&file_);
  const auto remaining = file == nullptr ? std::nullopt : file->remaining();
  const bool in_part = claim == Claim::may_be_truncated;
  if (!remaining || (in_part && values <= trusted_bytes / bytes_of(kind))) return true;
  const std::int64_t needed = in_part ? values / most_truncation : values;
  if (!is_text(coding_)) return needed <= *remaining / bytes_of(kind);
  if (needed <= *remaining) return true;
  // With repeat counts a record of text can hold more values than bytes.
  return claim != Claim::records && file->may_hold_values(needed);
}

std::int64_t Connection::offset() const {
  const auto* const file = std::get_if<InputFile>(&file_);
  return file == nullptr ? 0 : file->offset();
}

}  // namespace mod_p3dgrid::recordio
