#pragma once

#include <cstdint>
#include <string>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {

inline constexpr integer status_end_of_file = -1;
inline constexpr integer status_error = 1;

/// Thrown if a file cannot be opened, written or closed. Callers know which file it is.
struct SystemError {
  const char* operation;
  int error;  ///< `errno`
};

/// Thrown by a read that fails.
struct ReadError {
  integer status;       ///< one of the above, or `errno`
  std::int64_t offset;  ///< byte of the file, from 0
  std::string found;
  std::string expected;
};

}  // namespace mod_p3dgrid::recordio
