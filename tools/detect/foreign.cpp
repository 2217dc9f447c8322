#include "detect/foreign.hpp"

#include <algorithm>
#include <optional>
#include <vector>

#include "detect/outline.hpp"
#include "detect/planar.hpp"
#include "grid_plan.hpp"

namespace p3dgrid {
namespace {

using Plan = std::vector<RecordPlan>;

/// The grid with its blocks in pieces: k planes, or one for each coordinate.
Plan in_pieces(const Extents& extents, bool multiblock, bool planes) {
  Plan plan = plan_of(GridForm{.multiblock = multiblock}, extents);
  plan.resize(plan.size() - extents.i.size());
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    const std::int64_t plane = std::int64_t{extents.i[b]} * extents.j[b];
    const RecordPlan piece{.reals = planes ? 3 * plane : extents.points_of(b)};
    plan.insert(plan.end(), static_cast<std::size_t>(planes ? extents.k[b] : 3), piece);
  }
  return plan;
}

bool is_in_pieces(Evidence& file, const Coding& coding, bool multiblock) {
  const auto outline = grid_outline(*file.header(coding), multiblock);
  if (!outline) return false;
  const Extents& extents = outline->extents;
  std::uint64_t planes = 0;
  for (const std::int32_t k : extents.k) planes += static_cast<std::uint64_t>(k);
  // Before memory is taken for as many records.
  if (planes > file.size() / (2 * marker_bytes)) return false;
  return file.fit(coding, in_pieces(extents, multiblock, true)).whole() ||
         file.fit(coding, in_pieces(extents, multiblock, false)).whole();
}

/// A 64-bit integer that 32 bits would do for; 0 where there is none.
std::int32_t wide_integer(ByteSource& source, std::uint64_t offset, ByteOrder order) {
  const bool big = order == ByteOrder::big;
  const auto low = source.integer(offset + (big ? 4 : 0), order);
  const auto high = source.integer(offset + (big ? 0 : 4), order);
  return low && high && *high == 0 ? std::max(*low, 0) : 0;
}

/// A count in a record, and behind it a record of as many extents.
bool has_wide_integers(Evidence& file, ByteOrder order) {
  constexpr std::uint64_t bytes = 8;
  RecordList& records = file.records(order);
  const Record* first = records.at(0);
  const Record* second = records.at(1);
  if (first == nullptr || second == nullptr || first->length != bytes) return false;
  const auto blocks = wide_integer(file.source(), marker_bytes, order);
  return blocks > 0 && second->length == 3 * bytes * static_cast<std::uint64_t>(blocks);
}

bool has_wide_markers(Evidence& file, ByteOrder order) {
  constexpr std::uint64_t bytes = 8;
  const std::int32_t length = wide_integer(file.source(), 0, order);
  if (length != 4 && length != 12) return false;
  const auto behind = bytes + static_cast<std::uint64_t>(length);
  return wide_integer(file.source(), behind, order) == length &&
         wide_integer(file.source(), behind + bytes, order) > 0;
}

/// Of unformatted files.
std::string other_records(Evidence& file, const Coding& coding) {
  if (is_in_pieces(file, coding, true) || is_in_pieces(file, coding, false)) {
    return "has the values of a block in several records, by k planes or by coordinates; only one "
           "record for each block can be read";
  }
  if (has_wide_integers(file, coding.order)) {
    return "has integers of 64 bits; only those of 32 can be read";
  }
  return "";
}

/// Carriage returns alone end no line for any Fortran program, and all of the text is one.
bool has_bare_returns(Evidence& file) {
  if (!file.begins_with_text()) return false;
  std::vector<char> start(1 << 16);
  start.resize(file.source().read(0, start));
  return std::ranges::find(start, '\r') != start.end() &&
         std::ranges::find(start, '\n') == start.end();
}

}  // namespace

std::string foreign_form(Evidence& file) {
  if (has_bare_returns(file)) {
    return "has carriage returns alone for line ends, which readers of text do not take for such; "
           "tr '\\r' '\\n' <FILE >NEW makes a file NEW that can be read";
  }
  for (const Coding& coding : codings_of(file, std::nullopt, std::nullopt, std::nullopt)) {
    if (coding.encoding == Encoding::binary) continue;
    const std::string planar = planar_form(file, coding);
    if (!planar.empty()) return "is " + planar + ", which " + planar_not_read;
    if (coding.encoding != Encoding::unformatted) continue;
    if (std::string what = other_records(file, coding); !what.empty()) return what;
    if (has_wide_markers(file, coding.order)) {
      return "has record markers of 64 bits; only those of 32 can be read";
    }
  }
  return "";
}

std::string foreign_length(Evidence& file) {
  if (file.begins_with_text()) return "";
  for (const Coding& coding : codings_of(file, Encoding::binary, std::nullopt, std::nullopt)) {
    if (const std::string planar = planar_form(file, coding); !planar.empty()) {
      return planar + ", " + describe(coding.encoding, coding.precision, coding.order);
    }
  }
  return "";
}

}  // namespace p3dgrid
