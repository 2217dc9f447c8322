#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "format/file_plan.hpp"
#include "p3dgrid/detect.hpp"
#include "recordio/input_file.hpp"
#include "recordio/read_error.hpp"
#include "recordio/record_scanner.hpp"

namespace p3dgrid {

/// Whether readings may have blocks without points. They are tried only if no other reading agrees,
/// and with at most 262,144 blocks, because a run of zeros can be any number of empty blocks.
enum class EmptyBlocks : bool { refused, accepted };

/// The contents of a header and the sizes of its records.
struct Outline {
  std::int32_t blocks = 1;
  std::shared_ptr<const Extents> extents;  ///< null if the header has none
  std::vector<std::int32_t> functions;     ///< variables of each block if the header has them
  ParameterCount parameters = {};          ///< of a block of an OVERFLOW solution
  std::int32_t older_levels = 0;           ///< layout 0: records of older levels per block
  HeaderSizes sizes;
};

/// A sample of 32-bit words.
struct IntegerSample {
  bool small = true;  ///< all could be flags or block numbers; reals taken for integers rarely are
  bool zero = true;   ///< all are zero, so they could be reals as well
  bool all = true;    ///< the sample contains all words
};

/// Counts of a text, which do not depend on what it is compared with.
struct TextCount {
  bool whole = false;       ///< the text has been read to its end
  std::int64_t work = 0;    ///< `ListScanner::work`
  std::int64_t values = 0;  ///< in all lines, up to the first item of each that is not a number
  /// Lines that begin with a comma, and so hold one more value if a record begins there.
  std::int64_t commas = 0;
};

/// The file being examined, and cached results about it.
class Evidence {
 public:
  /// Throws `Error`.
  explicit Evidence(std::string path);

  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] std::int64_t bytes_read() const {
    return file_.bytes_taken() + (text_file_ ? text_file_->bytes_taken() : 0);
  }
  /// The file with a small buffer, for reads of a few bytes after `seek`.
  recordio::InputFile& file() { return file_; }
  /// The file with a large buffer, at its beginning.
  recordio::InputFile& text();
  /// Limits the work of `fit` and `text_lines` on text.
  void limit_text(std::int64_t work) { text_work_ = work; }

  /// The first bytes of the file, at most `count`.
  [[nodiscard]] std::string beginning(std::int64_t count);
  [[nodiscard]] bool begins_with_text();

  /// True if the file consists of records with matching markers and the first is not empty. At most
  /// the first 1000 records are checked.
  [[nodiscard]] bool all_records_sound(const Coding& coding);

  /// Number of lines of text that are not blank.
  [[nodiscard]] std::int64_t text_lines();

  /// Whether the header can be read in bounded time: unformatted header records are not chains of
  /// many sub-records, and the first line of text ends within 64 KiB.
  [[nodiscard]] bool has_readable_header(const Coding& coding);

  [[nodiscard]] recordio::RecordScanner records(const Coding& coding) {
    return {file_, coding, size_};
  }
  /// The integer at a byte; none beyond the end of the file.
  [[nodiscard]] std::optional<std::int32_t> integer(std::int64_t offset, ByteOrder order) {
    if (offset < 0 || offset > size_ - 4) return std::nullopt;
    return recordio::integer_at(file_, offset, order);
  }
  /// The same for a record marker.
  [[nodiscard]] std::optional<std::int64_t> marker(std::int64_t offset, const Coding& coding) {
    if (offset < 0 || offset > size_ - marker_size(coding)) return std::nullopt;
    return recordio::marker_at(file_, offset, coding);
  }
  /// Samples `count` integers from byte `begin` on.
  [[nodiscard]] IntegerSample sample_integers(std::int64_t begin, std::int64_t count,
                                              ByteOrder order);

  /// The header of a grid; none if it is invalid: a block count below 1 or too large for the file,
  /// negative extents, more than 2^36 points.
  [[nodiscard]] std::optional<Outline> outline(const GridForm& form, EmptyBlocks empty);
  /// The same of a restart file.
  [[nodiscard]] std::optional<Outline> outline(const RestartForm& form, EmptyBlocks empty);
  /// The same in the form of a reading, which may have empty blocks.
  [[nodiscard]] std::optional<Outline> outline(const Reading& reading);

  /// Compares the file with a plan, which is then at its end or where the file differs.
  [[nodiscard]] Fit fit(const Coding& coding, FilePlan& plan);
  /// Compares text with all plans in one pass.
  [[nodiscard]] std::vector<Fit> fit_text(std::span<FilePlan> plans);
  /// Counts of the last comparison of text.
  [[nodiscard]] const TextCount& text_count() const { return text_count_; }

 private:
  std::string path_;
  std::int64_t size_;
  recordio::InputFile file_;
  std::optional<recordio::InputFile> text_file_;
  std::optional<bool> text_;
  std::vector<std::pair<Coding, bool>> sound_;
  std::vector<std::pair<Coding, bool>> readable_header_;
  std::int64_t text_work_ = std::numeric_limits<std::int64_t>::max();
  std::optional<std::int64_t> text_lines_;
  TextCount text_count_;
};

/// Compares all record markers of an unformatted file.
[[nodiscard]] Fit fit_of_records(Evidence& file, const Coding& coding, FilePlan& plan);

/// Compares the length of a binary file, and reads the flags of layout 101.
[[nodiscard]] Fit fit_of_length(Evidence& file, const Coding& coding, FilePlan& plan);

/// Compares text with all plans in one pass. Each record begins on a new line, and no value follows
/// its last one on that line. Plans that agree when the work reaches `most_work` fit `so_far`.
[[nodiscard]] std::vector<Fit> fit_of_text(recordio::InputFile& file, std::span<FilePlan> plans,
                                           std::int64_t most_work, TextCount& count);

/// @name Parts of the descriptions of a difference
/// @{
inline constexpr const char* chain_text =
    "its third flag is not 999, and a chain of at most three flags ends with 999";
[[nodiscard]] std::string counted(std::int64_t count, const char* noun);  ///< "3 bytes"
[[nodiscard]] std::string record_text(std::int64_t agreeing,
                                      const FilePlan& plan);  ///< "record 3 of 4"
/// @}

/// Expected size divided by actual size, which counts as at least 1.
[[nodiscard]] double share_of(std::int64_t expected, std::int64_t found);

/// Examines a file with `examine`. Throws `Error` for errors of the system.
template <class Examine>
auto with_evidence(const std::string& path, Examine examine) {
  try {
    Evidence file(path);
    return examine(file);
  } catch (const recordio::SystemError& failure) {
    throw Error({.kind = ErrorKind::system,
                 .file = path,
                 .reason = std::generic_category().message(failure.error)});
  } catch (const recordio::ReadError& failure) {
    throw Error({.kind = ErrorKind::system, .file = path, .reason = failure.found});
  }
}

}  // namespace p3dgrid
