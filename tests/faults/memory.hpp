#pragma once

#include <cstdint>

/// Takes the place of the global allocation functions. Counts what is asked of them while a `Watch`
/// lives, except for what the host asks, and fails what it is told to.
namespace faults {

enum class FailingAllocations { none, one, all_from_there };

class Watch {
 public:
  /// @param nth  the first allocation that fails, from 1
  explicit Watch(FailingAllocations which = FailingAllocations::none, std::int64_t nth = 0);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  [[nodiscard]] static std::int64_t allocations();
  /// Sum of all bytes asked for, granted or not, whatever was released meanwhile.
  [[nodiscard]] static std::int64_t bytes();
};

}  // namespace faults
