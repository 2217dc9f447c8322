#pragma once

#include <string>

#include "find.hpp"

namespace p3dgrid::tool {

/// How a command that takes a grid and a restart file is written, for messages.
struct Usage {
  /// The command line with these two.
  std::string (*pair)(const std::string& grid, const std::string& restart);
  /// What a grid alone is meant for, as part of a sentence; null where no command takes one.
  std::string (*grid_alone)(const std::string& grid) = nullptr;
};

/// Finds a grid that a command takes alone. Where the file is a restart file instead, the Failure
/// says so.
/// @param meant  what takes a restart file, as part of a sentence
[[nodiscard]] Found find_grid(const std::string& path, const StatedGridForm& stated,
                              const std::string& meant);

/// Called when a file is not of the kind that its position or an option says. Throw a Failure if
/// the file is certainly of the other kind; return otherwise.
void refuse_if_restart(const std::string& path, const std::string& meant);
void refuse_if_grid(const std::string& path, const std::string& meant);

/// The same of the two files of a command, either of which may be in the place of the other.
void refuse_if_restart(const std::string& path, const std::string& restart_path,
                       const Usage& usage);
void refuse_if_grid(const std::string& path, const std::string& grid_path, const Usage& usage);

}  // namespace p3dgrid::tool
