#pragma once

#include <cstdint>
#include <fstream>
#include <stdexcept>

/// Files of bit patterns, through which the tests and the programs on the other side agree on
/// values: one integer in decimal per line.
namespace interop {

/// The next integer; throws if there is none.
[[nodiscard]] inline std::int64_t next_integer(std::ifstream& file) {
  std::int64_t value = 0;
  if (!(file >> value)) throw std::runtime_error("a file of bit patterns is too short");
  return value;
}

/// Throws unless all of the file has been read.
inline void expect_no_more(std::ifstream& file) {
  file >> std::ws;
  if (!file.eof()) throw std::runtime_error("a file of bit patterns is too long");
}

}  // namespace interop
