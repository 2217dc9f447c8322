#pragma once

#include <cstdint>

namespace model {

/// Arrays of the module's kind that are allocated now, whoever holds them: those whose storage is
/// aligned to a cache line.
[[nodiscard]] std::int64_t live_arrays();

/// All other memory that is allocated now, in pieces.
[[nodiscard]] std::int64_t live_pieces();

}  // namespace model
