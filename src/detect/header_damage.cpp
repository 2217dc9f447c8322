#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "detect/steps.hpp"
#include "recordio/number_text.hpp"

namespace p3dgrid {
namespace {

constexpr std::int64_t integer_bytes = 4;
constexpr std::int64_t extents_bytes = 3 * integer_bytes;

/// Length of the record at a byte if its markers match, else 0.
std::int64_t length_at(Evidence& file, std::int64_t offset, const Coding& coding) {
  const auto head = file.marker(offset, coding);
  if (!head || *head <= 0 || *head > file.size()) return 0;
  return file.marker(offset + marker_size(coding) + *head, coding) == *head ? *head : 0;
}

/// Describes a first record with one wrong marker.
std::string first_marker(Evidence& file, const Coding& coding, std::int64_t length) {
  const std::int64_t behind = marker_size(coding) + length;
  const auto head = file.marker(0, coding);
  const auto tail = file.marker(behind, coding);
  if (!head || !tail || (*head == length) == (*tail == length)) return "";
  if (length_at(file, behind + marker_size(coding), coding) == 0) return "";
  const bool first = *head != length;
  return "record 1 at byte 0: its marker at byte " + std::to_string(first ? 0 : behind) + " says " +
         std::to_string(first ? *head : *tail) + " where " + std::to_string(length) +
         " is expected, as at byte " + std::to_string(first ? behind : 0);
}

/// Describes extents that are negative or too large for the file.
/// @param record  holds the extents of all blocks
std::string impossible_extents(Evidence& file, const recordio::ScannedRecord& record,
                               ByteOrder order, std::int32_t blocks) {
  for (std::int32_t b = 0; b < blocks; ++b) {
    std::array<std::int32_t, 3> extents{};
    double bytes = extents_bytes;
    for (std::size_t n = 0; n < extents.size(); ++n) {
      const std::int64_t at = b * extents_bytes + static_cast<std::int64_t>(n) * integer_bytes;
      extents[n] = file.integer(record.payload + at, order).value_or(0);
      bytes *= extents[n];
    }
    const bool negative = std::ranges::any_of(extents, [](std::int32_t e) { return e < 0; });
    if (!negative && bytes <= static_cast<double>(file.size())) continue;
    return "record 2 at byte " + std::to_string(record.offset) + " gives block " +
           std::to_string(b + 1) + " the extents " + std::to_string(extents[0]) + " " +
           std::to_string(extents[1]) + " " + std::to_string(extents[2]) + ", which a file of " +
           std::to_string(file.size()) + " bytes cannot hold";
  }
  return "";
}

/// Describes damage after the record of the block count.
std::string behind_count(Evidence& file, const Coding& coding) {
  constexpr const char* asked = " are expected for the extents of ";
  recordio::RecordScanner records = file.records(coding);
  static_cast<void>(records.next());
  const auto blocks = file.integer(marker_size(coding), coding.byte_order).value_or(0);
  if (blocks < 1 || blocks > file.size()) return "";
  const std::int64_t expected = blocks * extents_bytes;
  const auto record = records.next();
  if (!record) {
    return "is cut short: the file ends at byte " + std::to_string(file.size()) +
           " behind record 1, where " + std::to_string(expected) + " bytes" + asked +
           counted(blocks, "block");
  }
  const std::string where = "record 2 at byte " + std::to_string(record->offset);
  if (!record->sound()) {
    const bool cut = record->state == recordio::ScannedRecord::State::cut;
    return (cut ? "is cut short: " : "") + where + ": " + record->what;
  }
  if (record->length == expected) {
    return impossible_extents(file, *record, coding.byte_order, blocks);
  }
  return where + " holds " + std::to_string(record->length) + " bytes by its marker where " +
         std::to_string(expected) + asked + counted(blocks, "block");
}

/// Describes a block count that exceeds the possible number of lines.
std::string missing_lines(Evidence& file) {
  const std::string start = file.beginning(80);
  const std::size_t begin = std::min(start.find_first_not_of(' '), start.size());
  const std::size_t end = std::min(start.find_first_of("\r\n"), start.size());
  std::int32_t blocks = 0;
  if (!recordio::parse_number(std::string_view(start).substr(begin, end - begin), blocks) ||
      blocks <= file.size()) {
    return "";
  }
  return "line 1 announces " + std::to_string(blocks) + " blocks, and a text of " +
         std::to_string(file.size()) + " bytes has no lines for them";
}

}  // namespace

std::string header_damage(Evidence& file) {
  if (file.begins_with_text()) return missing_lines(file);
  for (const MarkerBytes bytes : {MarkerBytes::four, MarkerBytes::eight}) {
    for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
      const Coding coding{.byte_order = order, .marker_bytes = bytes};
      const bool count = length_at(file, 0, coding) == integer_bytes;
      std::string what =
          count ? behind_count(file, coding) : first_marker(file, coding, integer_bytes);
      if (what.empty() && !count) what = first_marker(file, coding, extents_bytes);
      if (!what.empty()) return what + "; taken as unformatted, " + name_of(order) + "-endian";
    }
  }
  return "";
}

std::string beginning_of(Evidence& file) {
  constexpr std::size_t enough = 40;
  const std::string bytes = file.beginning(enough);
  if (file.begins_with_text()) {
    const std::size_t end = std::min(bytes.find_first_of("\r\n"), bytes.size());
    return "line 1 is \"" + bytes.substr(0, end) + (end == enough ? "...\"" : "\"");
  }
  constexpr std::string_view gzip = "\x1f\x8b";
  if (bytes.starts_with(gzip)) return "it is compressed, and gunzip would unpack it";
  std::string text = "its first bytes are";
  for (const char c : bytes.substr(0, 8)) {
    std::array<char, 4> hex{};
    std::snprintf(hex.data(), hex.size(), " %02x", static_cast<unsigned>(c) & 0xffU);
    text += hex.data();
  }
  return text;
}

}  // namespace p3dgrid
