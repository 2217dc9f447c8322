#pragma once

#include <functional>
#include <optional>
#include <string>

#include "mod_p3dgrid/file_name.hpp"
#include "p3dgrid/form.hpp"
#include "recordio/connection.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid {

using p3dgrid::Encoding;
using recordio::OpenStatus;

/// The fixed unit numbers.
namespace unit_number {

inline constexpr integer grid = 13;            ///< grid file read or written
inline constexpr integer grid_header = 22;     ///< grid file whose header is read
inline constexpr integer spare = 23;           ///< closed by `checkp3drstrtheader`, never opened
inline constexpr integer restart_read = 201;   ///< restart file being read
inline constexpr integer restart_write = 301;  ///< restart file or temporary file being written
inline constexpr integer tecplot = 594;        ///< Tecplot file

/// Temporary file of a variable, from 1, while files are combined.
[[nodiscard]] constexpr integer temporary(integer variable) {
  return restart_write + variable;
}

}  // namespace unit_number

/// Thrown by a failed read after its reason has been stored for `p3dlastfailure`. `end_operation`
/// reports it to the host.
struct FailedRead {};

/// Handle of an operation on a unit number and an encoding. The connection stays open until the
/// unit is closed.
///
/// With an unknown file-format code it opens, reads and writes nothing; `close` closes a connection
/// that an earlier operation left.
///
/// Errors of opening, writing and closing are fatal.
class Unit {
 public:
  Unit(integer number, integer iformat);

  /// Whether the file-format code is known.
  [[nodiscard]] bool known() const { return encoding_.has_value(); }

  /// The coding of the file, from the arguments of an operation and `p3dsetcoding`. Unknown
  /// file-format codes count as text of three dimensions.
  [[nodiscard]] p3dgrid::Coding coding(const FileName& name, logical dblprec) const;

  /// Closes the unit and connects it to the file. Returns its coding, apart from the precision.
  p3dgrid::Coding open(const FileName& name, OpenStatus status) const;

  /// Reads one record. If that fails, stores the values read until then and throws `FailedRead`.
  /// @param rest  refused too if `p3dsetwholerecords` says so
  void read(const recordio::ReadList& list,
            recordio::RestOfRecord rest = recordio::RestOfRecord::skipped) const;

  /// Throws `FailedRead` unless the end of the file is reached.
  void expect_end() const;

  /// Writes one record.
  void write(const recordio::WriteList& list) const;

  /// Writes lines of text that are not list-directed records.
  void write_text(const std::function<void(recordio::OutputFile&)>& write_lines) const;

  /// Flushes and disconnects the file, if there is one.
  void close() const;
  /// Disconnects the file and deletes it. Returns why it could not be deleted; empty if it is gone.
  [[nodiscard]] std::string close_and_delete() const;

  /// Throws `FailedRead` if the rest of the file cannot hold the values that its header announces.
  /// Called before memory is allocated for them.
  /// @param announced  their description for the error
  void require_room(std::int64_t values, recordio::FileKind kind, recordio::Claim claim,
                    const std::string& announced) const;

  /// Throws `FailedRead`.
  [[noreturn]] void fail(std::string found, std::string expected) const;

  /// Throws `FailedRead` unless `usable`: a host may have returned from a failed allocation.
  void require_array(bool usable, const char* expected) const {
    if (!usable) fail("no array to read into", expected);
  }

 private:
  template <class Action>
  void read_with(Action action) const;
  template <class Action>
  void write_with(Action action) const;

  integer number_;
  std::optional<Encoding> encoding_;
};

/// Handles an exception in `catch (...)` of an operation. Reports a failed read to the host, and
/// makes lack of memory a fatal error. Exceptions of the host are rethrown.
/// @param doing  the operation, such as "read grid"
void end_operation(const char* doing, const FileName& file);

/// The path of a file name according to `p3dsetpaths`.
[[nodiscard]] std::string path_of(const FileName& name);

/// Whether both names refer to one existing file.
[[nodiscard]] bool same_file(const FileName& one, const FileName& other);

/// Whether the name exists, even as a dangling link.
[[nodiscard]] bool file_exists(const FileName& name);

}  // namespace mod_p3dgrid
