#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "p3dgrid/form.hpp"
#include "recordio/connection.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid {

using p3dgrid::Encoding;
using recordio::OpenStatus;

/// Thrown by a failed read, for which `p3dlastfailure` gives the reason. `end_operation` tells the
/// host.
struct FailedRead {};

/// An operation's handle on one of the fixed unit numbers, in the encoding its caller asked for.
/// The connection itself outlives the handle: it lasts until the unit is closed.
///
/// With an unknown file-format code the handle opens, reads and writes nothing and reports success;
/// `close` closes whatever an earlier operation left connected.
///
/// Failing opens, writes and closes are fatal errors.
class Unit {
 public:
  Unit(integer number, integer iformat);

  /// Whether the file-format code is a known one.
  [[nodiscard]] bool known() const { return encoding_.has_value(); }

  /// Whether the file stores values in the kinds of the record lists, rather than as text.
  [[nodiscard]] bool stores_kinds() const { return known() && encoding_ != Encoding::formatted; }

  /// Connects the file, from its start; what was connected before is closed first.
  void open(const FileName& name, OpenStatus status) const;

  /// Reads one record. Throws `FailedRead`; values read until then have been stored.
  void read(const recordio::ReadList& list) const;

  /// Reads one record that must hold just what is listed: more in it is an error too.
  void read_whole(const recordio::ReadList& list) const;

  /// Throws `FailedRead` if something is left to read.
  void expect_end() const;

  /// Writes one record.
  void write(const recordio::WriteList& list) const;

  /// Writes a line of text as it stands.
  void write_line(std::string_view line) const;

  /// Writes a line of text for each of `points` points: of every entry the values of all its rows
  /// at that point, in turn.
  void write_points(const recordio::WriteList& list, std::int64_t points) const;

  /// Flushes and disconnects the file; harmless without one.
  void close() const;
  /// Disconnects the file and deletes it. Returns why it could not be deleted; empty if it is gone.
  [[nodiscard]] std::string close_and_delete() const;

  /// Throws `FailedRead` unless the rest of the file may hold what its header announces; asked
  /// before memory is taken for it.
  /// @param announced  what was expected
  void require_room(std::int64_t values, recordio::FileKind kind, recordio::Claim claim,
                    const std::string& announced) const;

  /// Throws `FailedRead` for what an operation found in the file.
  [[noreturn]] void fail(std::string found, std::string expected) const;

  /// Throws `FailedRead` unless the arrays of a read are usable, as a host that returns from a
  /// failed allocation may leave them.
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

/// Ends an operation that an exception has left; called in its `catch (...)`. The host is told of a
/// failed read, and memory that has run out is a fatal error. Everything else passes: it comes from
/// the host, its own `std::bad_alloc` included.
/// @param doing  the operation, such as "read grid"
/// @param file   its file
void end_operation(const char* doing, const FileName& file);

/// The path that the host's names stand for: what is opened, and what messages show.
[[nodiscard]] std::string path_of(const FileName& name);

/// Whether two names stand for one existing file.
[[nodiscard]] bool same_file(const FileName& one, const FileName& other);

/// Whether something of that name exists, be it a link that leads nowhere.
[[nodiscard]] bool file_exists(const FileName& name);

}  // namespace mod_p3dgrid
