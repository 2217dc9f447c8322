#include "detect/header_damage.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "encoding.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

constexpr std::uint64_t integer_bytes = 4;
constexpr std::uint64_t extents_bytes = 3 * integer_bytes;

std::string text_of(std::uint64_t number) {
  return std::to_string(number);
}

/// A record stands at that byte whose markers agree; 0 for none, else its length.
std::uint64_t length_at(ByteSource& source, std::uint64_t offset, ByteOrder order) {
  const auto head = source.integer(offset, order);
  if (!head || *head <= 0) return 0;
  const auto length = static_cast<std::uint64_t>(*head);
  return source.integer(offset + marker_bytes + length, order) == *head ? length : 0;
}

/// The first record is there, but for one of its two markers.
std::string first_marker(ByteSource& source, ByteOrder order, std::uint64_t length) {
  const auto head = source.integer(0, order);
  const auto tail = source.integer(marker_bytes + length, order);
  const auto expected = static_cast<std::int32_t>(length);
  if (!head || !tail || (*head == expected) == (*tail == expected)) return "";
  if (length_at(source, length + 2 * marker_bytes, order) == 0) return "";
  const bool first = *head != expected;
  return "record 1 at byte 0: its marker at byte " + text_of(first ? 0 : marker_bytes + length) +
         " says " + std::to_string(first ? *head : *tail) + " where " + text_of(length) +
         " is expected, as at byte " + text_of(first ? marker_bytes + length : 0);
}

/// Extents that are none, or more than the file holds; `record` has those of all blocks.
std::string impossible_extents(ByteSource& source, const Record& record, ByteOrder order,
                               std::int32_t blocks) {
  for (std::int32_t b = 0; b < blocks; ++b) {
    std::array<std::int32_t, 3> extents{};
    double bytes = extents_bytes;
    for (std::size_t n = 0; n < extents.size(); ++n) {
      const std::uint64_t at = static_cast<std::uint64_t>(b) * extents_bytes + n * integer_bytes;
      extents[n] = source.integer(record.offset + marker_bytes + at, order).value_or(0);
      bytes *= extents[n];
    }
    const bool negative = std::ranges::any_of(extents, [](std::int32_t e) { return e < 0; });
    if (!negative && bytes <= static_cast<double>(source.size())) continue;
    return "record 2 at byte " + text_of(record.offset) + " gives block " + std::to_string(b + 1) +
           " the extents " + std::to_string(extents[0]) + " " + std::to_string(extents[1]) + " " +
           std::to_string(extents[2]) + ", which a file of " + text_of(source.size()) +
           " bytes cannot hold";
  }
  return "";
}

/// What follows behind a record of nothing but the number of blocks.
std::string behind_count(Evidence& file, ByteOrder order) {
  constexpr const char* asked = " are expected for the extents of ";
  RecordList& records = file.records(order);
  const auto blocks = file.source().integer(marker_bytes, order).value_or(0);
  if (blocks < 1 || blocks > static_cast<std::int64_t>(file.size())) return "";
  const std::uint64_t expected = static_cast<std::uint64_t>(blocks) * extents_bytes;
  const Record* record = records.at(1);
  if (record == nullptr) {
    return "is cut short: the file ends at byte " + text_of(file.size()) +
           " behind record 1, where " + text_of(expected) + " bytes" + asked +
           counted(blocks, "block");
  }
  const std::string where = "record 2 at byte " + text_of(record->offset);
  if (record->state != Record::State::sound) {
    const bool cut = record->state == Record::State::cut;
    return (cut ? "is cut short: " : "") + where + ": " + record->what;
  }
  if (record->length == expected) {
    return impossible_extents(file.source(), *record, order, blocks);
  }
  return where + " holds " + text_of(record->length) + " bytes by its marker where " +
         text_of(expected) + asked + counted(blocks, "block");
}

}  // namespace

std::string header_damage(Evidence& file) {
  if (file.begins_with_text()) return "";
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    const bool count = length_at(file.source(), 0, order) == integer_bytes;
    std::string what =
        count ? behind_count(file, order) : first_marker(file.source(), order, integer_bytes);
    if (what.empty() && !count) what = first_marker(file.source(), order, extents_bytes);
    if (!what.empty()) return what + "; taken as unformatted, " + name_of(order) + "-endian";
  }
  return "";
}

std::string beginning_of(Evidence& file) {
  std::array<char, 40> start{};
  const std::size_t count = file.source().read(0, start);
  const std::string_view bytes(start.data(), count);
  if (file.begins_with_text()) {
    const std::size_t end = std::min(bytes.find_first_of("\r\n"), count);
    return "line 1 is \"" + std::string(bytes.substr(0, end)) +
           (end == start.size() ? "...\"" : "\"");
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
