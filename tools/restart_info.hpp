#pragma once

#include <string>

#include "restart_report.hpp"

namespace p3dgrid::tool {

/// Shows a restart file's header values, blocks and variables.
void print_restart_info(const std::string& path, const RestartReport& report);

}  // namespace p3dgrid::tool
