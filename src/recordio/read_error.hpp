#pragma once

#include <cstdint>
#include <string>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {

inline constexpr integer status_end_of_file = -1;
inline constexpr integer status_error = 1;

/// Thrown inside the record layer when a read cannot go on; it never leaves `Unit::read`.
struct ReadError {
  integer status;
  std::int64_t offset;  ///< byte of the file, from 0
  std::string found;
  std::string expected;
};

}  // namespace mod_p3dgrid::recordio
