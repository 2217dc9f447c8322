#include <algorithm>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// Whether the file is a grid with several records per block: one for each k plane, or one for each
/// coordinate.
bool fits_split_blocks(Evidence& file, const Coding& coding, const Outline& outline, bool planes) {
  HeaderSizes sizes = outline.sizes;
  const Extents& extents = *outline.extents;
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    const std::int64_t plane = std::int64_t{extents.i[b]} * extents.j[b];
    sizes.add({.reals = planes ? 3 * plane : extents.points_of(b)}, planes ? extents.k[b] : 3);
  }
  FilePlan plan(std::move(sizes), std::make_shared<const Extents>(), GridForm());
  return file.fit(coding, plan).whole();
}

bool has_split_blocks(Evidence& file, const Coding& coding, bool multiblock) {
  const auto outline = file.outline(GridForm{coding, multiblock}, EmptyBlocks::refused);
  return outline && (fits_split_blocks(file, coding, *outline, true) ||
                     fits_split_blocks(file, coding, *outline, false));
}

/// The 64-bit integer at an offset if it has at most 31 bits, else 0.
std::int32_t wide_integer(Evidence& file, std::int64_t offset, ByteOrder order) {
  const bool big = order == ByteOrder::big;
  const auto low = file.integer(offset + (big ? 4 : 0), order);
  const auto high = file.integer(offset + (big ? 0 : 4), order);
  return low && high && *high == 0 ? std::max(*low, 0) : 0;
}

/// Whether the file begins with 64-bit block count and extents.
bool has_wide_integers(Evidence& file, const Coding& coding) {
  constexpr std::int64_t bytes = 8;
  recordio::RecordScanner records = file.records(coding);
  const auto first = records.next();
  const auto second = records.next();
  if (!first || !second || first->length != bytes) return false;
  const std::int64_t blocks = wide_integer(file, first->payload, coding.byte_order);
  return blocks > 0 && second->length == 3 * bytes * blocks;
}

/// Unsupported forms of unformatted files.
std::string unsupported_records(Evidence& file, const Coding& coding) {
  if (has_split_blocks(file, coding, true) || has_split_blocks(file, coding, false)) {
    return "has the values of a block in several records, by k planes or by coordinates; only one "
           "record for each block can be read";
  }
  if (has_wide_integers(file, coding)) {
    return "has integers of 64 bits; only those of 32 can be read";
  }
  return "";
}

/// For Fortran programs text whose lines end with carriage returns alone is one line.
bool has_bare_returns(Evidence& file) {
  if (!file.begins_with_text()) return false;
  const std::string start = file.beginning(1 << 16);
  return start.find('\r') != start.npos && start.find('\n') == start.npos;
}

}  // namespace

std::string foreign_form(Evidence& file) {
  if (has_bare_returns(file)) {
    return "has carriage returns alone for line ends, which readers of text do not take for such; "
           "tr '\\r' '\\n' <FILE >NEW makes a file NEW that can be read";
  }
  for (const Coding& coding : codings_of(file, {.dimensions = Dimensions::three})) {
    if (coding.encoding != Encoding::unformatted) continue;
    if (std::string what = unsupported_records(file, coding); !what.empty()) return what;
  }
  return "";
}

}  // namespace p3dgrid
