#include <algorithm>
#include <array>

#include "detect/evidence.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;
using recordio::ScannedRecord;

constexpr std::int64_t disk_block = 512;

/// Whether the rest of the file is zeros that fill its last disk block.
bool is_padding(Evidence& file, std::int64_t begin) {
  const std::int64_t size = file.size();
  if (size <= begin || size - begin >= disk_block || size % disk_block != 0) return false;
  std::array<char, disk_block> rest{};
  file.file().seek(begin);
  file.file().read(rest.data(), size - begin);
  return std::all_of(rest.begin(), rest.begin() + (size - begin), [](char c) { return c == 0; });
}

/// Compares an unformatted record with its expected length.
Fit fit_of_record(const ScannedRecord& record, std::int64_t expected, std::int64_t agreeing,
                  const FilePlan& plan) {
  const bool has_length = record.length > 0 || record.sound();
  const std::string where =
      record_text(agreeing, plan) + " at byte " + std::to_string(record.offset);
  if (has_length && record.length != expected) {
    return {.agreement = Agreement::other,
            .records = agreeing,
            .what = where + " holds " + counted(record.length, "byte") + " by its marker where " +
                    std::to_string(expected) + " are expected",
            .share = share_of(expected, record.length),
            .record = agreeing + 1,
            .offset = record.offset};
  }
  if (record.sound()) return {};
  // The marker has the expected length, so the record counts although its end is missing.
  const bool cut = record.state == ScannedRecord::State::cut;
  return {.agreement = cut ? Agreement::cut : Agreement::other,
          .records = agreeing + (has_length ? 1 : 0),
          .what = where + ": " + record.what,
          .record = agreeing + 1,
          .offset = record.offset};
}

}  // namespace

std::string counted(std::int64_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string record_text(std::int64_t agreeing, const FilePlan& plan) {
  return "record " + std::to_string(agreeing + 1) + " of " + std::to_string(plan.records());
}

double share_of(std::int64_t expected, std::int64_t found) {
  return static_cast<double>(expected) / static_cast<double>(std::max<std::int64_t>(found, 1));
}

bool only_followed(const Fit& fit, Encoding encoding) {
  return fit.agreement == Agreement::remark ||
         (fit.agreement == Agreement::longer && encoding == Encoding::unformatted);
}

Fit fit_of_records(Evidence& file, const Coding& coding, FilePlan& plan) {
  recordio::RecordScanner records = file.records(coding);
  std::int64_t agreeing = 0;
  std::int64_t end = 0;
  while (const auto size = plan.next()) {
    const std::optional<ScannedRecord> record = records.next();
    if (!record) {
      return {Agreement::cut, agreeing,
              "the file ends at byte " + std::to_string(file.size()) + " behind " +
                  counted(agreeing, "record") + " of " + std::to_string(plan.records())};
    }
    Fit fit = fit_of_record(*record, size->bytes(coding), agreeing, plan);
    if (!fit.whole()) return fit;
    if (size->kind == BodyRecordKind::flag) {
      plan.set_flag(file.integer(record->payload, coding.byte_order).value_or(0));
    }
    ++agreeing;
    end = record->end;
  }
  if (plan.unterminated_chain()) {
    return {Agreement::other, agreeing, chain_text};
  }
  if (end == file.size()) return {Agreement::whole, agreeing, ""};
  return {Agreement::longer, agreeing,
          counted(file.size() - end, "byte") + " follow behind the last record, from byte " +
              std::to_string(end) + " on"};
}

Fit fit_of_length(Evidence& file, const Coding& coding, FilePlan& plan) {
  std::int64_t expected = 0;
  while (const auto size = plan.next()) {
    if (size->kind == BodyRecordKind::flag) {
      plan.set_flag(file.integer(expected, coding.byte_order).value_or(end_of_extensions));
    }
    expected += size->bytes(coding);
  }
  const double share = share_of(expected, file.size());
  if (plan.unterminated_chain()) {
    return {.agreement = Agreement::other, .what = chain_text};
  }
  if (file.size() == expected) return {.share = share, .end = expected};
  if (is_padding(file, expected)) {
    return {.agreement = Agreement::padded,
            .what = counted(file.size() - expected, "byte") + " of zeros fill its last block of " +
                    std::to_string(disk_block),
            .share = share,
            .end = expected};
  }
  return {.agreement = file.size() < expected ? Agreement::cut : Agreement::longer,
          .what = "the file holds " + counted(file.size(), "byte") + " where " +
                  std::to_string(expected) + " are expected",
          .share = share};
}

}  // namespace p3dgrid
