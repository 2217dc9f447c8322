#pragma once

#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// The text with its control characters escaped: `\n`, `\t`, `\r`, all others as their bytes in
/// hexadecimal (`\x1b`). The result is one line without terminal control sequences. File names
/// are shown this way in `RunEnd::message` and `ReadFailure::describe`; the lines that go to
/// `p3dsetmessages` hold them as they are.
[[nodiscard]] std::string p3dprintable(std::string text);

/// How a run ends when the library ends it.
struct RunEnd {
  /// 0: the module has halted the run, having said why on standard output.
  /// 2: a fatal error: a file that cannot be opened, written or closed, or an invalid
  ///    argument.
  integer status = 0;
  /// For a fatal error one line: the operation, the file and the system's reason. Else empty.
  /// Control characters are escaped.
  /// Without memory for such a line it is "out of memory", or the operation alone.
  std::string message;
};

/// Installs what happens when the module halts the run or meets a fatal error.
///
/// The handler may throw: the exception leaves the operation, which releases its work arrays and
/// leaves its units open (close them with `p3dcloseunit`). If the handler returns, or if none is
/// installed (an empty function), the default follows: `message` is printed on standard error,
/// everything open is flushed and closed, and the process ends with `status`.
void p3dsetrunend(std::function<void(const RunEnd&)> handler);

/// Redirects the module's messages: `sink` gets each line, without its line end. An empty function
/// restores standard output. The sink may throw, with the effect described at `p3dsetrunend`.
void p3dsetmessages(std::function<void(std::string_view line)> sink);

/// Lets a host with paths longer than 40 characters give short names: whenever the library opens,
/// deletes or asks for a file, `resolver` turns the name (without trailing blanks) into the path
/// to use. Error messages show the path. An empty function restores the default: the name is the
/// path.
void p3dsetpaths(std::function<std::string(std::string_view name)> resolver);

/// Sets the byte order of unformatted and binary files: whenever the library opens a file,
/// `chooser` is asked for the order of its values and record markers, by the name that the host
/// uses (without trailing blanks). The order holds until that file is closed. Text is not affected,
/// and values in memory always have the machine's order. Temporary variable files are asked about
/// like any other, and must be given one order while written and combined. An empty function
/// restores the default: the machine's order.
///
///     p3dsetbyteorder([](std::string_view) { return std::endian::big; });
void p3dsetbyteorder(std::function<std::endian(std::string_view name)> chooser);

/// Asks the system for huge pages (2 MiB) for all arrays allocated from now on that hold whole
/// ones; off at the start of a run. The first touch of new memory then costs a fraction of what it
/// costs page by page, and that is most of the time of reading a file once. It stays the host's
/// choice: on a machine whose memory nobody has used yet, a virtual one most of all, the first huge
/// pages can cost several times as much as they save. Advice only; no result depends on it.
void p3dsethugepages(bool wanted);

/// Makes values that are left in a record of an unformatted file a failed read, with both lengths
/// in its reason; off at the start of a run. A record that holds more than is requested usually
/// means that precision, blanking, layout or sections are wrong. By default the rest is skipped,
/// and the values read are wrong too. Text, whose lines may hold more, and binary files, which have
/// no records, are not affected.
void p3dsetwholerecords(bool wanted);

/// How far the reading or writing of a file has got.
struct FileProgress {
  std::string_view path;   ///< of the file; valid during the call
  bool writing = false;    ///< the file is written
  std::int64_t bytes = 0;  ///< offset that reading has reached, or bytes written so far
  std::int64_t size = 0;   ///< of a file that is read; 0 for one that is written
};

/// Lets a host show how far long work is: `observer` is called whenever bytes of a regular file
/// have been read or written, once per full buffer and at least once per 64 MiB, never per value.
/// The thread that does the work calls it; it must not throw. An empty function restores the
/// default: nothing is called.
void p3dsetprogress(std::function<void(const FileProgress&)> observer);

/// Closes the unit: flushes what was written and disconnects the file. Harmless when nothing is
/// connected to the unit. A failing flush or close is a fatal error.
///
/// Units are closed by the operations that opened them except where their descriptions say
/// otherwise (a failed read leaves its unit open, for example). Whatever is still open when the
/// run ends is flushed and closed then.
void p3dcloseunit(integer unit);

/// Why the last failed read failed.
struct ReadFailure {
  std::string file;         ///< path of the file; empty when no read has failed yet
  integer unit = 0;         ///< unit that was read
  integer status = 0;       ///< -1 at the end of the file, positive for an error; else 0
  std::int64_t record = 0;  ///< record of the file, from 1; in a text file, number of the read
  std::int64_t offset = 0;  ///< byte at which it was noticed, from 0
  std::int64_t line = 0;    ///< line of a text file, from 1; 0 for other files
  std::string found;        ///< what the file holds there
  std::string expected;     ///< what was asked for

  /// All of it as one line of text without a line end, control characters of the path escaped.
  [[nodiscard]] std::string describe() const;
};

/// The last failed read of the run. Set before `mod_gridvars::dispfilereaderror` is called, and
/// valid until the next read fails or `p3dclearfailure` is called. Its status is 0 as long as none
/// has failed.
[[nodiscard]] const ReadFailure& p3dlastfailure();

/// Forgets the last failed read: `p3dlastfailure` is what it was at the start of the run. A host
/// that calls this before an operation can tell by the status whether that has failed.
void p3dclearfailure();

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
