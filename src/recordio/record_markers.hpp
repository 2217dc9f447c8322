#pragma once

#include <cstdint>

#include "mod_p3dgrid/logical.hpp"

/// Framing of unformatted records, as the common Fortran run-time libraries write them: a 4-byte
/// marker with the payload's length before and after it. A record longer than one marker can tell
/// is a chain of sub-records. The marker before a sub-record is negative when another follows; the
/// marker after it is negative when another came before.
namespace mod_p3dgrid::recordio {

using Marker = std::int32_t;

/// Longest payload of one sub-record.
inline constexpr std::int64_t default_subrecord_limit = 2'147'483'639;

/// The limit that the writer splits at. Readers take sub-records of any length.
[[nodiscard]] std::int64_t subrecord_limit();
/// Lowers the limit, so that splitting can be exercised on small files; at least 1.
void set_subrecord_limit(std::int64_t limit);

}  // namespace mod_p3dgrid::recordio
