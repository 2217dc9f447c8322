#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "mod_p3dgrid/logical.hpp"
#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// The text with its control characters escaped: `\n`, `\t`, `\r`, all others as their bytes in
/// hexadecimal (`\x1b`). The result is one line without terminal control sequences. File names are
/// shown this way in `RunEnd::message` and `ReadFailure::describe`; the lines that go to
/// `p3dsetmessages` hold them as they are.
[[nodiscard]] std::string p3dprintable(std::string text);

/// How the library ends a run.
struct RunEnd {
  /// - 0: the run is halted, after the reason has been printed.
  /// - 2: a fatal error: a file that cannot be opened, written or closed, an invalid argument, or
  ///   lack of memory.
  integer status = 0;
  /// For a fatal error one line with the operation, the file and the reason, control characters
  /// escaped; else empty. Without memory for it, "out of memory" or the operation alone.
  std::string message;
};

/// Installs a handler for halts and fatal errors.
///
/// The handler may throw: the exception leaves the operation, which releases its work arrays and
/// leaves its units open (close them with `p3dcloseunit`). If the handler returns, or if none is
/// installed (an empty function), `message` is printed on standard error, all units are flushed and
/// closed, and the process exits with `status`.
void p3dsetrunend(std::function<void(const RunEnd&)> handler);

/// Redirects messages: `sink` receives each line without its line end. An empty function restores
/// standard output. The sink may throw, with the effect described at `p3dsetrunend`.
void p3dsetmessages(std::function<void(std::string_view line)> sink);

/// Translates file names, for hosts with paths of more than 40 characters: `resolver` receives the
/// name without trailing blanks and returns the path to open, delete or examine. Error messages
/// show the path. An empty function restores the default: the name is the path.
void p3dsetpaths(std::function<std::string(std::string_view name)> resolver);

/// Sets what the arguments of the operations do not say about a file. Once or more in an operation
/// `chooser` receives its name without trailing blanks and returns its coding. Three of its members
/// are used:
/// - `byte_order` of unformatted and binary files; if not stated, that of the machine;
/// - `marker_bytes` of unformatted files; if not stated, 4;
/// - `dimensions` of grids and of restart files in layouts 2 and 3; if not stated, three. Other
///   layouts in two dimensions are a fatal error.
///
/// In memory all files have three dimensions. Of a file of two, k extents are read as 1, third
/// coordinates and third momenta (variable 4 of layout 2) as 0. To write one, k extents must be 1;
/// third coordinates and momenta are left out.
///
/// Temporary variable files must have the same byte order and markers while they are written and
/// combined. An empty function restores the defaults.
///
///     p3dsetcoding([](std::string_view) {
///       return p3dgrid::StatedCoding{.byte_order = p3dgrid::ByteOrder::big};
///     });
void p3dsetcoding(std::function<p3dgrid::StatedCoding(std::string_view name)> chooser);

/// Advises the system to use huge pages (2 MiB) for arrays allocated from now on; off at the start
/// of a run. This shortens the first access to new memory, which is most of the time of reading a
/// file once. It is optional because on a machine with unused memory, a virtual one above all, the
/// first huge pages can cost several times what they save. No result depends on it.
void p3dsethugepages(bool wanted);

/// Makes an unformatted record that holds more than requested a failed read, with both lengths in
/// its reason; off at the start of a run. Such a record usually means that precision, blanking,
/// layout or sections are wrong; by default its rest is skipped. Text and binary files are not
/// affected.
void p3dsetwholerecords(bool wanted);

/// Progress of reading or writing a file.
struct FileProgress {
  std::string_view path;   ///< of the file; valid during the call
  bool writing = false;    ///< the file is written
  std::int64_t bytes = 0;  ///< offset that reading has reached, or bytes written so far
  std::int64_t size = 0;   ///< of a file that is read; 0 for one that is written
};

/// Sets the receiver of progress: `observer` is called whenever bytes of a regular file
/// have been read or written, once per full buffer and at least once per 64 MiB, never per value.
/// The thread that does the work calls it; it must not throw. An empty function restores the
/// default: nothing is called.
void p3dsetprogress(std::function<void(const FileProgress&)> observer);

/// Flushes and closes a unit; does nothing if it is not open. Errors are fatal.
///
/// Operations close the units that they open unless their descriptions say otherwise; a failed read
/// leaves its unit open. Open units are flushed and closed when the run ends.
void p3dcloseunit(integer unit);

/// Place and reason of a failed read.
struct ReadFailure {
  std::string file;         ///< path of the file; empty if no read has failed
  integer unit = 0;         ///< unit that was read
  integer status = 0;       ///< -1 at the end of the file, positive for an error; else 0
  std::int64_t record = 0;  ///< record of the file, from 1; in a text file, number of the read
  std::int64_t offset = 0;  ///< byte at which it was detected, from 0
  std::int64_t line = 0;    ///< line of a text file, from 1; 0 for other files
  std::string found;        ///< contents of the file
  std::string expected;     ///< what was expected instead

  /// All members as one line of text without a line end, control characters escaped.
  [[nodiscard]] std::string describe() const;
};

/// The last failed read of the run; status 0 if there is none. Set before
/// `mod_gridvars::dispfilereaderror` is called. Valid until the next read fails or
/// `p3dclearfailure` is called.
[[nodiscard]] const ReadFailure& p3dlastfailure();

/// Resets `p3dlastfailure` to its state at the start of the run. If called before an operation, the
/// status shows afterwards whether that has failed.
void p3dclearfailure();

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
