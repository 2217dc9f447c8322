#include "p3dgrid/index.hpp"

#include <algorithm>
#include <array>

namespace p3dgrid {

const char* name_of(ValueKind kind) {
  constexpr std::array names = {"integer4", "real4", "real8"};
  return names[static_cast<std::size_t>(kind)];
}

const char* name_of(Content content) {
  constexpr std::array names = {"coordinate", "iblank", "parameters", "variable", "triplets"};
  return names[static_cast<std::size_t>(content)];
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
