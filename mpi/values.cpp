#include "values.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace p3dgrid::tool {
namespace {

template <class Value>
Value in_order(Value value, bool swap) {
  if (!swap) return value;
  auto bytes = std::bit_cast<std::array<std::byte, sizeof(Value)>>(value);
  std::ranges::reverse(bytes);
  return std::bit_cast<Value>(bytes);
}

/// @tparam From  of the size of the stored values; an unsigned integer if their kind stays
template <class From, class To>
void convert(const std::byte* from, bool swap_from, std::byte* to, bool swap_to,
             std::int64_t count) {
  for (std::int64_t n = 0; n < count; ++n) {
    From value;
    std::memcpy(&value, from, sizeof value);
    const auto result = in_order(static_cast<To>(in_order(value, swap_from)), swap_to);
    std::memcpy(to, &result, sizeof result);
    from += sizeof value;
    to += sizeof result;
  }
}

}  // namespace

void convert_values(const std::byte* from, Storage stored, std::byte* to, Storage wanted,
                    std::int64_t count) {
  const bool swap_from = stored.order != ByteOrder::native;
  const bool swap_to = wanted.order != ByteOrder::native;
  const bool narrow = bytes_of(stored.kind) == 4;
  if (stored.kind == wanted.kind && swap_from == swap_to) {
    std::memcpy(to, from, static_cast<std::size_t>(count * bytes_of(stored.kind)));
  } else if (stored.kind == wanted.kind) {
    narrow ? convert<std::uint32_t, std::uint32_t>(from, swap_from, to, swap_to, count)
           : convert<std::uint64_t, std::uint64_t>(from, swap_from, to, swap_to, count);
  } else {
    narrow ? convert<float, double>(from, swap_from, to, swap_to, count)
           : convert<double, float>(from, swap_from, to, swap_to, count);
  }
}

}  // namespace p3dgrid::tool
