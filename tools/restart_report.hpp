#pragma once

#include <optional>
#include <string>

#include "agreement.hpp"

namespace p3dgrid::tool {

/// What is known of a restart file. Its other header values are the library's module variables.
struct RestartReport {
  const Found& found;
  RestartHeader header;
  std::optional<Restart> body = {};  ///< none where it cannot be read: extents are not known, or
                                     ///< its blocks hold different numbers of functions

  /// Those read or else stated; null where nothing tells.
  [[nodiscard]] const Sections* sections() const {
    if (body) return &body->sections;
    const auto& stated = found.restart().sections;
    return stated ? &*stated : nullptr;
  }
};

/// Reads a restart file, whole if the extents of its blocks are known.
[[nodiscard]] RestartReport report_on_restart(const std::string& path, const Found& found);

/// The same of a file that belongs to a grid.
[[nodiscard]] RestartReport report_on_restart(const std::string& path, const Case& found);

}  // namespace p3dgrid::tool
