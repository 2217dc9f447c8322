#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace interop {

/// All bytes of a file; none if it cannot be read.
[[nodiscard]] inline std::string bytes_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace interop
