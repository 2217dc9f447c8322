#pragma once

#include <string>

#include "find.hpp"

/// Finds out the forms of the files that a command is given, and whether they are of the kinds that
/// it takes.
namespace p3dgrid::tool {

/// A file that may be a grid or a restart file, and what the options say of it.
struct AnyFile {
  std::string path;
  StatedGridForm grid;
  StatedRestartForm restart;
  std::string grid_option;     ///< the first one given; empty for none
  std::string restart_option;  ///< the same
};

/// Finds out what the file is. An option for one kind of file says that it is of that kind; options
/// for both are wrong usage.
[[nodiscard]] Found find_file(const AnyFile& file, Look look = Look::where_needed);

/// Usage of a command that takes a grid and a restart file, for messages.
struct Usage {
  const char* command_line;  ///< "p3dgrid check GRID RESTART"
  const char* grid_alone =
      nullptr;  ///< what takes a GRID alone, as part of a sentence, if anything

  /// The command line with these two files.
  [[nodiscard]] std::string pair(const std::string& grid, const std::string& restart) const;
};

/// Finds a grid that a command takes alone. The Failure for a restart file in its place says so.
/// @param meant  what takes a restart file, as part of a sentence
[[nodiscard]] Found find_grid(const std::string& path, const StatedGridForm& stated,
                              const std::string& meant);

/// A grid, and a restart file that belongs to it as far as their headers and lengths tell.
struct Case {
  Found grid;
  Found restart = {};
  Extents extents = {};  ///< of the grid
};

/// Finds out the forms of a grid and of a restart file, and checks that the two belong together. If
/// they do not, a line for each block that differs goes to standard output, and a Failure with
/// the first of them is thrown. The Failure for a file of the other kind says how the command is
/// written.
[[nodiscard]] Case find_case(const std::string& grid_path, const StatedGridForm& grid,
                             const std::string& restart_path, const StatedRestartForm& restart,
                             const Usage& usage, Look look = Look::where_needed);

}  // namespace p3dgrid::tool
