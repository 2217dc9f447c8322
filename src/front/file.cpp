#include "front/file.hpp"

#include <filesystem>
#include <utility>

namespace p3dgrid {
namespace {

using recordio::OpenStatus;

std::unique_ptr<recordio::Connection> opened(const std::string& path, const Coding& coding,
                                             OpenStatus status) {
  return on_file(path,
                 [&] { return std::make_unique<recordio::Connection>(path, coding, status); });
}

}  // namespace

void fail(ErrorKind kind, const std::string& path, std::string reason,
          std::vector<Reading> readings) {
  throw Error(
      {.kind = kind, .file = path, .reason = std::move(reason), .readings = std::move(readings)});
}

void refuse(const std::string& path, std::string found, std::string expected) {
  throw Error({.kind = ErrorKind::argument,
               .file = path,
               .found = std::move(found),
               .expected = std::move(expected)});
}

SourceFile::SourceFile(std::string path, const Coding& coding)
    : path_(std::move(path)),
      coding_(coding),
      connection_(opened(path_, coding, OpenStatus::old)) {}

bool is_regular(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

void require_places(const std::string& path, const Coding& coding) {
  if (!is_text(coding) && is_regular(path)) return;
  fail(ErrorKind::unsupported, path,
       is_text(coding) ? "is text, whose values have no fixed places"
                       : "is not a regular file, and has no index");
}

void SourceFile::require_regular() const {
  // Opening a named pipe again would wait for another writer.
  if (is_regular(path_)) return;
  p3dgrid::fail(ErrorKind::system, path_, "is not a regular file, and can be read forward only");
}

void SourceFile::rewind() {
  require_regular();
  record_.reset();
  connection_ = opened(path_, coding_, OpenStatus::old);
}

template <class Action>
auto SourceFile::guarded(Action action) const {
  try {
    return on_file(path_, action);
  } catch (recordio::ReadError& error) {
    throw failure(error.status > recordio::status_error ? ErrorKind::system : ErrorKind::damaged,
                  error.offset, std::move(error.found), std::move(error.expected));
  }
}

Error SourceFile::failure(ErrorKind kind, std::int64_t offset, std::string found,
                          std::string expected) const {
  return Error({.kind = kind,
                .file = path_,
                .record = connection_->record(),
                .line = connection_->line(),
                .offset = offset,
                .found = std::move(found),
                .expected = std::move(expected)});
}

ParameterCount SourceFile::parameters_after(std::int64_t records) const {
  require_regular();
  constexpr std::int64_t buffer = 4096;
  const auto count = guarded([&] {
    recordio::InputFile file(path_, buffer);
    return overflow_parameters(file, coding_, file.remaining().value_or(0), records);
  });
  if (!count) fail("another record", "a record of more than four flow parameters");
  return *count;
}

void SourceFile::read(const recordio::ReadList& list) {
  guarded([&] { connection_->read(list, recordio::RestOfRecord::skipped); });
}

void SourceFile::begin() {
  guarded([&] { record_.emplace(connection_->begin_read()); });
}

void SourceFile::read_part(const recordio::Values<void>& entry) {
  guarded([&] { record_->read(entry); });
}

StoredArray SourceFile::locate(StoredArray array) {
  guarded([&] { record_->locate(array.count * bytes_of(array.kind), array.ranges); });
  return array;
}

void SourceFile::end() {
  guarded([&] { record_->finish(recordio::RestOfRecord::skipped); });
  record_.reset();
}

void SourceFile::skip(const recordio::ReadList& list) {
  guarded([&] { connection_->skip(list); });
}

void SourceFile::require_room(std::int64_t values, recordio::FileKind kind,
                              recordio::Claim claim) const {
  if (guarded([&] { return connection_->can_hold(values, kind, claim); })) return;
  fail("a file far too short for that", std::to_string(values) + " values");
}

void SourceFile::fail(std::string found, std::string expected) const {
  throw failure(ErrorKind::damaged, connection_->offset(), std::move(found), std::move(expected));
}

TargetFile::TargetFile(std::string path, const Coding& coding, std::int32_t blocks)
    : path_(std::move(path)),
      connection_(opened(path_, coding, OpenStatus::unknown)),
      blocks_(blocks) {}

std::int32_t TargetFile::next_block() const {
  if (begun_ == blocks_) {
    refuse(path_, "one more block", "the " + std::to_string(blocks_) + " of the header");
  }
  return begun_;
}

void TargetFile::write(const recordio::WriteList& list) {
  on_file(path_, [&] { connection_->write(list); });
}

void TargetFile::close() {
  if (begun_ < blocks_) {
    refuse(path_, std::to_string(begun_) + " blocks",
           "the " + std::to_string(blocks_) + " of the header");
  }
  on_file(path_, [&] { connection_->close(); });
}

}  // namespace p3dgrid
