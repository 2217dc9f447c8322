#pragma once

#include <cstdint>
#include <string>

#include "detect/reading.hpp"

namespace p3dgrid {

/// What has been found out of a file.
struct Found {
  Reading reading;
  std::string reason = {};       ///< what shows it, as part of a sentence
  std::uint64_t bytes_read = 0;  ///< that it took to see that
  bool stated = false;           ///< the user has said it all, and nothing has been compared yet

  [[nodiscard]] const GridForm& grid() const { return reading.grid(); }
  [[nodiscard]] const RestartForm& restart() const { return reading.restart(); }
};

}  // namespace p3dgrid
