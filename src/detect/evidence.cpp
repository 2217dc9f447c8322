#include "detect/evidence.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

namespace p3dgrid {
namespace {

/// Only the markers after a record and before the next are adjacent.
constexpr std::size_t marker_buffer = 128;
constexpr std::size_t text_buffer = std::size_t{256} * 1024;

const std::string& checked(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  const bool other = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
                     !std::filesystem::is_directory(status);
  // Opening a named pipe would block. All other errors are reported when the file is opened.
  if (!other) return path;
  throw Error({.kind = ErrorKind::system,
               .file = path,
               .reason = "is not a regular file, and cannot be looked into before it is read"});
}

/// The answer for a coding; `check` is called for the first question only. Markers depend neither
/// on the precision nor on the dimensions.
template <class Check>
bool remembered(std::vector<std::pair<Coding, bool>>& answers, Coding coding, Check check) {
  coding.precision = {};
  coding.dimensions = {};
  const auto known = std::ranges::find(answers, coding, &std::pair<Coding, bool>::first);
  if (known != answers.end()) return known->second;
  return answers.emplace_back(coding, check()).second;
}

}  // namespace

Evidence::Evidence(std::string path)
    : path_(std::move(path)), size_(0), file_(checked(path_), marker_buffer) {
  size_ = file_.remaining().value_or(0);
}

recordio::InputFile& Evidence::text() {
  if (!text_file_) text_file_.emplace(path_, text_buffer);
  text_file_->seek(0);
  text_file_->end_at(std::numeric_limits<std::int64_t>::max());
  return *text_file_;
}

std::string Evidence::beginning(std::int64_t count) {
  std::string bytes(static_cast<std::size_t>(std::min(count, size_)), '\0');
  file_.seek(0);
  file_.read(bytes.data(), std::ssize(bytes));
  return bytes;
}

// Other files begin with small integers, which contain zero bytes.
bool Evidence::begins_with_text() {
  if (text_) return *text_;
  const std::string start = beginning(512);
  text_ = !start.empty() && std::ranges::all_of(start, [](char c) {
    const auto code = static_cast<unsigned char>(c);
    return std::isprint(code) != 0 || std::isspace(code) != 0;
  });
  return *text_;
}

bool Evidence::all_records_sound(const Coding& coding) {
  return remembered(sound_, coding, [&] {
    constexpr int most_records = 1000;
    recordio::RecordScanner scanner = records(coding);
    auto record = scanner.next();
    // A file of zeros looks like empty records.
    if (!record || record->length == 0) return false;
    for (int n = 0; n < most_records && record; ++n, record = scanner.next()) {
      if (!record->sound()) return false;
    }
    return true;
  });
}

std::int64_t Evidence::text_lines() {
  if (text_lines_) return *text_lines_;
  recordio::InputFile lines(path_, text_buffer);
  lines.end_at(text_work_ / 4);
  std::int64_t count = 0;
  for (bool blank = true; !lines.at_end(); lines.consume_to(lines.end())) {
    for (const char c : std::string_view(lines.begin(), lines.end())) {
      if (c > ' ' && std::exchange(blank, false)) ++count;
      if (c == '\n') blank = true;
    }
  }
  text_lines_ = count;
  return count;
}

IntegerSample Evidence::sample_integers(std::int64_t begin, std::int64_t count, ByteOrder order) {
  // Above any number of blocks. Normal singles and the usual NaNs are larger as integers.
  constexpr std::int64_t largest_small = 1 << 20;
  constexpr std::int64_t runs = 16;
  constexpr std::int64_t run_length = 64;
  IntegerSample sample{.all = count <= runs * run_length};
  const std::int64_t distance = sample.all ? run_length : (count - run_length) / (runs - 1);
  for (std::int64_t n = 0; n < std::min(count, runs * run_length) && sample.small; ++n) {
    const std::int64_t index = n / run_length * distance + n % run_length;
    const auto word = integer(begin + 4 * index, order);
    if (!word) continue;  // the file has become shorter
    sample.zero = sample.zero && *word == 0;
    sample.small = std::abs(std::int64_t{*word}) <= largest_small;
  }
  return sample;
}

bool Evidence::has_readable_header(const Coding& coding) {
  return remembered(readable_header_, coding, [&] {
    constexpr std::int64_t longest_line = std::int64_t{64} * 1024;
    constexpr int most_header_records = 4;  // before the records of the blocks
    if (is_text(coding)) {
      return size_ <= longest_line || beginning(longest_line).find('\n') != std::string::npos;
    }
    if (coding.encoding == Encoding::binary) return true;
    recordio::RecordScanner scanner = records(coding);
    auto record = scanner.next();
    for (int n = 1; n < most_header_records && record && record->sound(); ++n) {
      record = scanner.next();
    }
    return !record || !record->has_many_subrecords;
  });
}

Fit Evidence::fit(const Coding& coding, FilePlan& plan) {
  if (is_text(coding)) return fit_text(std::span(&plan, 1)).front();
  return coding.encoding == Encoding::binary ? fit_of_length(*this, coding, plan)
                                             : fit_of_records(*this, coding, plan);
}

std::vector<Fit> Evidence::fit_text(std::span<FilePlan> plans) {
  // Half of the work is left for another comparison with other plans.
  std::vector<Fit> fits = fit_of_text(text(), plans, text_work_ / 2, text_count_);
  text_work_ = std::max<std::int64_t>(0, text_work_ - text_count_.work);
  return fits;
}

}  // namespace p3dgrid
