#pragma once

#include <cstdint>

namespace p3dgrid {

/// Values that one record holds.
struct RecordPlan {
  std::int64_t integers = 0;
  std::int64_t reals = 0;    ///< of the file's precision
  std::int64_t doubles = 0;  ///< 64-bit whatever the file's precision

  [[nodiscard]] std::int64_t values() const { return integers + reals + doubles; }

  [[nodiscard]] std::uint64_t bytes(std::uint64_t real_bytes) const {
    return static_cast<std::uint64_t>(integers) * 4 +
           static_cast<std::uint64_t>(reals) * real_bytes + static_cast<std::uint64_t>(doubles) * 8;
  }
};

}  // namespace p3dgrid
