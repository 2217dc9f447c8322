#pragma once

#include <string>

#include "grid_file.hpp"
#include "restart_report.hpp"

namespace p3dgrid::tool {

/// What `info` shows of a file, as JSON by the schema that docs/info-json.md describes.
[[nodiscard]] std::string json_of(const std::string& path, const Found& found, const Grid& grid);
[[nodiscard]] std::string json_of(const std::string& path, const RestartReport& report);

}  // namespace p3dgrid::tool
