#pragma once

#include <cstdint>
#include <string>

#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid::recordio {

inline constexpr integer status_end_of_file = -1;
inline constexpr integer status_error = 1;

/// Thrown where a file cannot be opened, written or closed: what was tried, and the system's error
/// number. The file is known to those who catch it.
struct SystemError {
  const char* operation;
  int error;
};

/// Thrown where a read cannot go on.
struct ReadError {
  integer status;
  std::int64_t offset;  ///< byte of the file, from 0
  std::string found;
  std::string expected;
};

}  // namespace mod_p3dgrid::recordio
