#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "recordio/form.hpp"
#include "recordio/input_file.hpp"
#include "recordio/output_file.hpp"
#include "recordio/read_error.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// How `Unit::open` treats the file.
enum class OpenStatus : std::uint8_t {
  old,      ///< must exist; it is read
  unknown,  ///< replaced or created; it is written
  fresh,    ///< must not exist; it is written
};

/// A file connected to a unit: carries out record lists in the form of the file.
class Connection {
 public:
  Connection(std::string path, Form form, OpenStatus status);

  /// Reads one record. Throws `ReadError`.
  void read(const ReadList& list);

  /// Writes one record.
  void write(const WriteList& list);

  /// Flushes and closes; needed by a connection that writes.
  void close();

  /// Whether the rest of the file can hold so many values, or is of no known size. Small amounts
  /// are taken on trust: the read will find out.
  /// @param cut_short  the file may have lost all but a sixteenth of them
  [[nodiscard]] bool can_hold(std::int64_t values, FileKind kind, bool cut_short) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::int64_t record() const { return record_; }
  [[nodiscard]] std::int64_t offset() const;
  /// Line of a text file at which reading stands, from 1; 0 for other files.
  [[nodiscard]] std::int64_t line() const { return form_ == Form::formatted ? lines_ + 1 : 0; }

 private:
  [[nodiscard]] InputFile* input() { return std::get_if<InputFile>(&file_); }
  [[nodiscard]] OutputFile* output() { return std::get_if<OutputFile>(&file_); }

  std::string path_;
  Form form_;
  std::variant<std::monostate, InputFile, OutputFile> file_;
  std::int64_t record_ = 0;  ///< records begun
  std::int64_t lines_ = 0;   ///< lines read
};

}  // namespace mod_p3dgrid::recordio
