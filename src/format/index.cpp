#include "p3dgrid/index.hpp"

#include <algorithm>

namespace p3dgrid {

const char* name_of(ValueKind kind) {
  switch (kind) {
    case ValueKind::integer4:
      return "integer4";
    case ValueKind::real4:
      return "real4";
    case ValueKind::real8:
      return "real8";
  }
  return "";
}

const char* name_of(Content content) {
  switch (content) {
    case Content::coordinate:
      return "coordinate";
    case Content::iblank:
      return "iblank";
    case Content::parameters:
      return "parameters";
    case Content::variable:
      return "variable";
    case Content::triplets:
      return "triplets";
  }
  return "";
}

std::vector<ByteRange> StoredArray::of(std::int64_t first, std::int64_t last) const {
  std::vector<ByteRange> parts;
  std::int64_t begin = first * bytes_of(kind);  // from here on relative to the range
  std::int64_t end = last * bytes_of(kind);
  for (const ByteRange& range : ranges) {
    const std::int64_t from = std::max<std::int64_t>(begin, 0);
    const std::int64_t to = std::min(end, range.bytes);
    if (from < to) parts.push_back({range.offset + from, to - from});
    begin -= range.bytes;
    end -= range.bytes;
  }
  return parts;
}

}  // namespace p3dgrid
