#pragma once

#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "recordio/connection.hpp"
#include "recordio/form.hpp"
#include "recordio/record_list.hpp"

namespace mod_p3dgrid::recordio {

/// An operation's handle on one of the fixed unit numbers, in the form its caller asked for. The
/// connection itself outlives the handle: it lasts until the unit is closed.
///
/// With an unknown file-format code the handle opens, reads and writes nothing and reports success;
/// `close` closes whatever an earlier operation left connected.
class Unit {
 public:
  Unit(integer number, integer iformat) : number_(number), form_(form_of(iformat)) {}

  /// Whether the file-format code is a known one.
  [[nodiscard]] bool known() const { return form_ != Form::none; }

  /// Whether the file stores values in the kinds of the record lists, rather than as text.
  [[nodiscard]] bool stores_kinds() const {
    return form_ == Form::unformatted || form_ == Form::binary;
  }

  /// Connects the file, from its start; what was connected before is closed first. A failing open
  /// is a fatal error.
  void open(const FileName& name, OpenStatus status) const;

  /// Reads one record. False if that fails; `p3dlastfailure` then says why. Values read until then
  /// have been stored.
  [[nodiscard]] bool read(const ReadList& list) const;

  /// Reads one record that must hold just what is listed: more in it is an error too.
  [[nodiscard]] bool read_whole(const ReadList& list) const;

  /// Whether nothing is left to read. False, as a failed read, if something is.
  [[nodiscard]] bool expect_end() const;

  /// Writes one record. A failing write is a fatal error.
  void write(const WriteList& list) const;

  /// Flushes and disconnects the file; harmless without one.
  void close() const;
  /// Disconnects the file and deletes it. Returns why it could not be deleted; empty if it is gone.
  [[nodiscard]] std::string close_and_delete() const;

  /// Writes a line of text as it stands.
  void write_line(std::string_view line) const;

  /// Writes a line of text for each of `points` points: of every entry the values of all its rows
  /// at that point, in turn.
  void write_points(const WriteList& list, std::int64_t points) const;

  /// Whether the rest of the file may hold what its header announces; asked before memory is taken
  /// for it. If not, that is a failed read, with `announced` as what was expected.
  [[nodiscard]] bool can_hold(std::int64_t values, FileKind kind, Claim claim,
                              const std::string& announced) const;

  /// Makes what an operation found in the file a failed read.
  void fail(std::string found, std::string expected) const;

 private:
  template <class Action>
  [[nodiscard]] bool attempt(Action action) const;
  [[nodiscard]] Connection& connection_to_write() const;

  integer number_;
  Form form_;
};

/// The path that the host's names stand for: what is opened, and what messages show.
[[nodiscard]] std::string path_of(const FileName& name);

/// Whether two names stand for one existing file.
[[nodiscard]] bool same_file(const FileName& one, const FileName& other);

/// Ends the run because memory has run out while `doing` with the file; called where a
/// `std::bad_alloc` is handled, at the end of every operation. The host's own goes on as it is.
[[noreturn]] void fail_without_memory(const char* doing, const FileName& file);

/// Whether something of that name exists, be it a link that leads nowhere.
[[nodiscard]] bool file_exists(const FileName& name);

}  // namespace mod_p3dgrid::recordio
