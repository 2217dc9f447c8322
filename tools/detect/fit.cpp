#include "detect/fit.hpp"

#include <algorithm>
#include <array>

#include "detect/line_walk.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;

constexpr std::uint64_t disk_block = 512;

// Text that holds so much of what is expected, and then more, has had something added to it.
constexpr double most_of_a_text = 0.9;

double share_of(std::uint64_t expected, std::uint64_t found) {
  return static_cast<double>(expected) / static_cast<double>(std::max<std::uint64_t>(found, 1));
}

std::string bytes_text(std::uint64_t bytes) {
  return counted(static_cast<std::int64_t>(bytes), "byte");
}

std::string record_text(std::size_t n) {
  return "record " + std::to_string(n + 1);
}

/// Some systems have written files in full blocks.
bool is_padding(ByteSource& source, std::uint64_t begin) {
  if (source.size() <= begin || source.size() - begin >= disk_block) return false;
  if (source.size() % disk_block != 0) return false;
  std::array<char, disk_block> rest{};
  const std::size_t count = source.read(begin, rest);
  return std::all_of(rest.begin(), rest.begin() + count, [](char c) { return c == 0; });
}

std::string of_all(const std::vector<RecordPlan>& plan) {
  return " of " + std::to_string(plan.size());
}

double share_of_values(const TextLines& text, const std::vector<RecordPlan>& plan) {
  std::uint64_t expected = 0;
  for (const RecordPlan& record : plan) expected += static_cast<std::uint64_t>(record.values());
  return share_of(expected, static_cast<std::uint64_t>(text.values));
}

}  // namespace

bool only_followed(const Fit& fit, Encoding encoding) {
  return fit.agreement == Agreement::remark ||
         (fit.agreement == Agreement::longer && encoding == Encoding::unformatted);
}

Fit fit_of_records(RecordList& records, std::uint64_t file_size,
                   const std::vector<RecordPlan>& plan, std::uint64_t real_bytes) {
  for (std::size_t n = 0; n < plan.size(); ++n) {
    const auto agreeing = static_cast<std::int64_t>(n);
    const Record* record = records.at(n);
    if (record == nullptr) {
      return {Agreement::cut, agreeing,
              "the file ends at byte " + std::to_string(file_size) + " behind " +
                  counted(agreeing, "record") + of_all(plan)};
    }
    const std::uint64_t expected = plan[n].bytes(real_bytes);
    const bool head = record->length > 0 || record->state == Record::State::sound;
    const std::string where =
        record_text(n) + of_all(plan) + " at byte " + std::to_string(record->offset);
    if (head && record->length != expected) {
      return {.agreement = Agreement::other,
              .records = agreeing,
              .what = where + " holds " + bytes_text(record->length) + " by its marker where " +
                      std::to_string(expected) + " are expected",
              .share = share_of(expected, record->length)};
    }
    if (record->state == Record::State::sound) continue;
    // A marker of the length expected counts as agreement: it is there, and what is behind is not.
    return {record->state == Record::State::cut ? Agreement::cut : Agreement::other,
            agreeing + (head ? 1 : 0), where + ": " + record->what};
  }
  const auto all = static_cast<std::int64_t>(plan.size());
  const std::uint64_t end = plan.empty() ? 0 : records.at(plan.size() - 1)->end;
  if (end == file_size) return {Agreement::whole, all, ""};
  return {Agreement::longer, all,
          bytes_text(file_size - end) + " follow behind the last record, from byte " +
              std::to_string(end) + " on"};
}

Fit fit_of_length(ByteSource& source, const std::vector<RecordPlan>& plan,
                  std::uint64_t real_bytes) {
  const std::uint64_t file_size = source.size();
  std::uint64_t expected = 0;
  for (const RecordPlan& record : plan) expected += record.bytes(real_bytes);
  const double share = share_of(expected, file_size);
  if (file_size == expected) return {.share = share};
  if (is_padding(source, expected)) {
    return {.agreement = Agreement::padded,
            .what = bytes_text(file_size - expected) + " of zeros fill its last block of " +
                    std::to_string(disk_block),
            .share = share};
  }
  return {.agreement = file_size < expected ? Agreement::cut : Agreement::longer,
          .what = "the file holds " + bytes_text(file_size) + " where " + std::to_string(expected) +
                  " are expected",
          .share = share};
}

Fit fit_of_text(const TextLines& text, const std::vector<RecordPlan>& plan) {
  const double share = share_of_values(text, plan);
  LineWalk walk(text);
  for (std::size_t n = 0; n < plan.size(); ++n) {
    Fit fit = walk.take(plan[n].values());
    if (fit.whole()) continue;
    fit.records = static_cast<std::int64_t>(n);
    fit.what = record_text(n) + of_all(plan) + ": " + fit.what;
    fit.line = walk.line();
    fit.share = share;
    return fit;
  }
  const auto all = static_cast<std::int64_t>(plan.size());
  const std::int64_t words = walk.next_words();
  if (const std::int64_t line = walk.next_values(); line > 0) {
    return {.agreement = Agreement::longer,
            .records = all,
            .what = "more values follow behind the last record, from line " + std::to_string(line) +
                    " on",
            .line = share > most_of_a_text ? walk.end() : line,
            .share = share};
  }
  if (words > 0) {
    return {Agreement::remark, all,
            "words follow behind the last record, " +
                (words == text.odd_line ? "\"" + text.odd_token + "\" on line " : "from line ") +
                std::to_string(words) + (words == text.odd_line ? "" : " on")};
  }
  return {Agreement::whole, all, ""};
}

std::int64_t line_of_record(const TextLines& text, const std::vector<RecordPlan>& plan,
                            std::size_t n) {
  LineWalk walk(text);
  for (std::size_t before = 0; before < n; ++before) walk.take(plan[before].values());
  return plan[n].values() > 0 ? walk.next_values() : walk.line();
}

}  // namespace p3dgrid
