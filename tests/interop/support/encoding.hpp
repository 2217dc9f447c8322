#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace interop {

/// Name of a file-format code, as the programs on the other side call it.
[[nodiscard]] inline std::string name_of_encoding(int encoding) {
  static const std::array<std::string, 3> names{"unformatted", "formatted", "binary"};
  return names.at(static_cast<std::size_t>(encoding));
}

[[nodiscard]] inline std::string name_of_precision(bool is_double) {
  return is_double ? "double" : "single";
}

}  // namespace interop
