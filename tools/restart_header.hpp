#pragma once

#include <MOD_P3DReader.hpp>
#include <string>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// What a restart file's header says of its blocks. The run data in it (step count, flow
/// parameters) are the library's module variables.
struct RestartHeader {
  mod_p3dgrid::integer blocks = 1;
  Extents extents;                              ///< empty where the layout holds none
  std::vector<mod_p3dgrid::integer> functions;  ///< of each block, layout 3 only
};

/// Reads a restart file's header. Throws a Failure that names the file.
[[nodiscard]] RestartHeader read_restart_header(const std::string& path, const RestartForm& form);

/// The same; a Failure comes with the options that would help, where there are some.
[[nodiscard]] RestartHeader header_with_advice(const std::string& path, const RestartForm& form);

/// True when a layout-0 header as read last holds the flow parameters.
[[nodiscard]] bool talven_parameters_read();

/// Refuses what cannot be read more than once, as a pipe; the header is read before the body.
void require_regular_file(const std::string& path);

}  // namespace p3dgrid::tool
