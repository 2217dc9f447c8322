#pragma once

#include "team.hpp"
#include "tools/command.hpp"

namespace p3dgrid::tool {

/// The commands of p3dgrid-mpi. The team must outlive them.
[[nodiscard]] Command shared_convert_command(const Team& team);
[[nodiscard]] Command shared_info_command(const Team& team);

}  // namespace p3dgrid::tool
