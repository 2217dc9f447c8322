#pragma once

#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "format/body.hpp"
#include "p3dgrid/error.hpp"
#include "p3dgrid/index.hpp"
#include "recordio/connection.hpp"

/// Files whose failures are thrown as `Error`.
namespace p3dgrid {

/// Runs an action on a file. Errors of the system are thrown as `Error`.
template <class Action>
auto on_file(const std::string& path, Action action) {
  try {
    return action();
  } catch (const recordio::SystemError& error) {
    throw Error({.kind = ErrorKind::system,
                 .file = path,
                 .reason = std::string(error.operation) + ": " +
                           std::generic_category().message(error.error)});
  }
}

[[nodiscard]] bool is_regular(const std::string& path);

/// Throws for a file whose values have no fixed positions.
void require_places(const std::string& path, const Coding& coding);

/// Throws an `Error`.
[[noreturn]] void fail(ErrorKind kind, const std::string& path, std::string reason,
                       std::vector<Reading> readings = {});

/// Throws an `Error` of the kind `argument`.
[[noreturn]] void refuse(const std::string& path, std::string found, std::string expected);

/// A file that is read record by record.
class SourceFile {
 public:
  SourceFile(std::string path, const Coding& coding);

  /// Reads a record.
  void read(const recordio::ReadList& list);
  /// @name A record that is read in parts
  /// @{
  void begin();
  void read_part(const recordio::Values<void>& entry);
  [[nodiscard]] bool in_record() const { return record_.has_value(); }
  /// Skips an array of the record and returns it with its byte ranges.
  [[nodiscard]] StoredArray locate(StoredArray array);
  void end();
  /// @}
  /// Skips a record that holds the list.
  void skip(const recordio::ReadList& list);
  /// Goes back to the first record.
  void rewind();
  /// The flow parameters of the blocks of an OVERFLOW solution, after these records.
  [[nodiscard]] ParameterCount parameters_after(std::int64_t records) const;

  /// Throws unless the rest of the file can hold the values, before memory is taken for them.
  void require_room(std::int64_t values, recordio::FileKind kind, recordio::Claim claim) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const Coding& coding() const { return coding_; }

  [[noreturn]] void fail(std::string found, std::string expected) const;

 private:
  template <class Action>
  auto guarded(Action action) const;
  [[nodiscard]] Error failure(ErrorKind kind, std::int64_t offset, std::string found,
                              std::string expected) const;
  void require_regular() const;

  std::string path_;
  Coding coding_;
  std::unique_ptr<recordio::Connection> connection_;
  std::optional<recordio::RecordInput> record_;  ///< that is read in parts
};

/// A file that is written record by record.
class TargetFile {
 public:
  /// @param blocks  number that its header announces
  TargetFile(std::string path, const Coding& coding, std::int32_t blocks = 0);

  /// The number of the next block, from 0. Throws if all of them have been begun.
  [[nodiscard]] std::int32_t next_block() const;
  void begin_block() { ++begun_; }

  /// Writes a record.
  void write(const recordio::WriteList& list);
  /// Writes lines of text that are not list-directed records: `write_lines(file)` writes them.
  template <class WriteLines>
  void write_text(WriteLines write_lines) {
    on_file(path_, [&] { write_lines(connection_->output()); });
  }
  /// Writes a record of `bytes` bytes in parts: `write_parts(record)` writes to the record.
  template <class WriteParts>
  void write(std::int64_t bytes, WriteParts write_parts) {
    on_file(path_, [&] {
      recordio::RecordOutput record = connection_->begin_record(bytes);
      write_parts(record);
      record.finish();
    });
  }
  /// Leaves a gap for a record of `bytes` bytes.
  void leave(std::int64_t bytes) {
    write(bytes, [&](recordio::RecordOutput& record) { record.leave(bytes); });
  }
  /// Throws if a block is missing.
  void close();

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::unique_ptr<recordio::Connection> connection_;
  std::int32_t blocks_;
  std::int32_t begun_ = 0;  ///< blocks
};

}  // namespace p3dgrid
