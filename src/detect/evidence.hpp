#pragma once

#include <limits>
#include <map>
#include <optional>
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
/// and only with a limited number of blocks, because a run of zeros looks like any number of them.
enum class EmptyBlocks : bool { refused, taken };

/// What a header says of the records that follow, and the sizes of its own.
struct Outline {
  std::int32_t blocks = 1;
  std::shared_ptr<const Extents> extents;  ///< null where the header has none
  std::vector<std::int32_t> functions;     ///< variables of each block, layout 3 only
  std::int32_t older_levels = 0;           ///< layout 0: records behind each block
  HeaderSizes sizes;
};

/// The file being examined, and what is known of it so far.
class Evidence {
 public:
  /// Throws `FileError`.
  explicit Evidence(const std::string& path);

  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] std::int64_t bytes_read() const {
    return file_.bytes_taken() + (text_file_ ? text_file_->bytes_taken() : 0);
  }
  /// The file, to be read from wherever `go_to` goes, a few bytes at a time.
  recordio::InputFile& file() { return file_; }
  /// The same through a large buffer, from its beginning.
  recordio::InputFile& text();
  /// Limits the work of all that `fit` and `text_lines` do with text.
  void limit_text(std::int64_t work) { text_work_ = work; }

  /// The first bytes of the file, at most `count`.
  [[nodiscard]] std::string beginning(std::int64_t count);
  [[nodiscard]] bool begins_with_text();

  /// True if the file consists of records with matching markers and the first is not empty. At most
  /// the first 1000 records are checked.
  [[nodiscard]] bool all_records_sound(ByteOrder order);

  /// Number of lines of text that are not blank.
  [[nodiscard]] std::int64_t text_lines();

  /// Whether a header can be read at all, in bounded time: unformatted header records are not
  /// chains of many sub-records, and the first line of text has an end within 64 KiB.
  [[nodiscard]] bool has_readable_header(const Coding& coding);

  [[nodiscard]] recordio::RecordScanner records(ByteOrder order) { return {file_, order, size_}; }
  /// The integer at a byte; none behind the end of the file.
  [[nodiscard]] std::optional<std::int32_t> integer(std::int64_t offset, ByteOrder order) {
    if (offset < 0 || offset > size_ - 4) return std::nullopt;
    return recordio::integer_at(file_, offset, order);
  }

  /// The header of a grid; none where it cannot be one: a block count below 1 or beyond what the
  /// file has room for, negative extents, more points than any machine holds.
  /// @param planar  with i and j extents alone; those in k are 1 then
  [[nodiscard]] std::optional<Outline> grid_outline(const Coding& coding, bool multiblock,
                                                    EmptyBlocks empty, bool planar = false);
  /// The header of a restart file likewise.
  [[nodiscard]] std::optional<Outline> restart_outline(const RestartForm& form, EmptyBlocks empty);

  /// Compares the file with plans of one coding. The plans are consumed.
  [[nodiscard]] std::vector<Fit> fit(const Coding& coding, std::span<FilePlan> plans);
  [[nodiscard]] Fit fit(const Coding& coding, FilePlan plan) {
    return fit(coding, std::span(&plan, 1)).front();
  }

  /// Of text: all values, counted by the last `fit`; none where it has not come to the end.
  [[nodiscard]] std::optional<std::int64_t> text_values() const { return text_values_; }
  /// Of text: lines that hold a value more where a record begins with them.
  [[nodiscard]] std::int64_t text_commas() const { return text_commas_; }

 private:
  std::string path_;
  std::int64_t size_;
  recordio::InputFile file_;
  std::optional<recordio::InputFile> text_file_;
  std::optional<bool> text_;
  std::map<ByteOrder, bool> sound_;
  std::map<std::pair<Encoding, ByteOrder>, bool> readable_header_;
  std::int64_t text_work_ = std::numeric_limits<std::int64_t>::max();
  std::optional<std::int64_t> text_lines_;
  std::optional<std::int64_t> text_values_;
  std::int64_t text_commas_ = 0;
};

/// Runs `look` on a file and turns errors of the system into `FileError`.
template <class Look>
auto looking_into(const std::string& path, Look look) {
  try {
    Evidence file(path);
    return look(file);
  } catch (const recordio::SystemError& failure) {
    throw FileError(path + ": " + std::generic_category().message(failure.error));
  } catch (const recordio::ReadError& failure) {
    throw FileError(path + ": " + failure.found);
  }
}

}  // namespace p3dgrid
