#pragma once

#include <cstddef>
#include <p3dgrid/index.hpp>

namespace p3dgrid::tool {

/// How the values of an array are stored.
struct Storage {
  ValueKind kind = ValueKind::real4;
  ByteOrder order = ByteOrder::native;
};

/// Copies values from one storage format to another. Integers stay integers; doubles are rounded to
/// singles.
void convert_values(const std::byte* from, Storage stored, std::byte* to, Storage wanted,
                    std::int64_t count);

}  // namespace p3dgrid::tool
