#include "recordio/connection.hpp"

#include <utility>

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

RecordInput::RecordInput(InputFile& file, const Coding& coding, std::int64_t& lines)
    : record_(is_text(coding) ? Record(std::in_place_type<ListReader>, file, lines)
                              : Record(std::in_place_type<PayloadReader>, file, coding)) {}

void RecordInput::read(const Values<void>& entry) {
  std::visit([&](auto& record) { record.read_values(entry); }, record_);
}

void RecordInput::locate(std::int64_t bytes, std::vector<p3dgrid::ByteRange>& places) {
  std::get<PayloadReader>(record_).locate(bytes, places);
}

void RecordInput::finish(RestOfRecord rest) {
  std::visit([&](auto& record) { record.finish(rest); }, record_);
}

RecordOutput::RecordOutput(OutputFile& file, const Coding& coding, std::int64_t bytes)
    : record_(is_text(coding) ? Record(std::in_place_type<ListWriter>, file)
                              : Record(std::in_place_type<PayloadWriter>, file, coding, bytes)) {}

void RecordOutput::write(const Values<const void>& entry) {
  std::visit([&](auto& record) { record.write_values(entry); }, record_);
}

void RecordOutput::leave(std::int64_t bytes) {
  std::get<PayloadWriter>(record_).leave(bytes);
}

void RecordOutput::finish() {
  std::visit([](auto& record) { record.finish(); }, record_);
}

void read_record(InputFile& file, const Coding& coding, const ReadList& list, RestOfRecord rest,
                 std::int64_t& lines) {
  // Without a `RecordInput`, which costs as much as a short record.
  const auto read = [&](auto record) {
    for (const auto& entry : list) record.read_values(entry);
    record.finish(rest);
  };
  is_text(coding) ? read(ListReader(file, lines)) : read(PayloadReader(file, coding));
}

Connection::Connection(std::string path, const Coding& coding, OpenStatus status)
    : path_(std::move(path)), coding_(coding) {
  if (status == OpenStatus::old) {
    input_.emplace(path_, is_text(coding_) ? text_buffer_size : byte_buffer_size);
  } else {
    output_.emplace(path_, status);
  }
}

InputFile& Connection::input_or_error() {
  if (input_) return *input_;
  throw ReadError{status_error, 0, "a file open for writing", "one open for reading"};
}

OutputFile& Connection::output() {
  output_.value().begin();
  return *output_;
}

void Connection::read(const ReadList& list, RestOfRecord rest) {
  InputFile& file = input_or_error();
  ++record_;
  read_record(file, coding_, list, rest, lines_);
}

void Connection::skip(const ReadList& list) {
  switch (coding_.encoding) {
    case Encoding::unformatted:
      return read({}, RestOfRecord::skipped);
    case Encoding::binary:
      ++record_;
      return input_or_error().skip(bytes_of(list));
    case Encoding::formatted:
      return read(list, RestOfRecord::skipped);
  }
}

void Connection::expect_end() {
  InputFile& file = input_or_error();
  if (file.at_end()) return;
  ++record_;
  throw ReadError{status_error, file.offset(), "more records", "the end of the file"};
}

RecordInput Connection::begin_read() {
  InputFile& file = input_or_error();
  ++record_;
  return {file, coding_, lines_};
}

RecordOutput Connection::begin_record(std::int64_t bytes) {
  OutputFile& file = output();
  ++record_;
  return {file, coding_, bytes};
}

void Connection::write(const WriteList& list) {
  RecordOutput record = begin_record(bytes_of(list));
  for (const auto& entry : list) record.write(entry);
  record.finish();
}

void Connection::close() {
  if (output_) output_->close();
}

bool Connection::can_hold(std::int64_t values, FileKind kind, Claim claim) const {
  const auto remaining = input_ ? input_->remaining() : std::nullopt;
  const bool in_part = claim == Claim::may_be_truncated;
  if (!remaining || (in_part && values <= trusted_bytes / bytes_of(kind))) return true;
  const std::int64_t needed = in_part ? values / most_truncation : values;
  if (!is_text(coding_)) return needed <= *remaining / bytes_of(kind);
  if (needed <= *remaining) return true;
  // With repeat counts a record of text can hold more values than bytes.
  return claim != Claim::records && input_->may_hold_values(needed);
}

}  // namespace mod_p3dgrid::recordio
