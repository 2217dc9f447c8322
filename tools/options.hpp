#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command.hpp"
#include "form_options.hpp"
#include "restart_conversion.hpp"

namespace p3dgrid::tool {

/// Adds options that describe the grid file to be read. Members without an option are left open.
/// @param given  receives the name of the first option given, in the order of the help
void add_grid_options(Command& command, StatedGridForm& stated, std::string* given = nullptr);

/// The same for the restart file to be read.
void add_restart_options(Command& command, StatedRestartForm& stated, std::string* given = nullptr);

/// Adds the option that names the grid of a restart file.
void add_grid_of_restart(Command& command, std::string& path);

/// Adds options that describe the coding of a file to be written in the dimensions of the file
/// read.
void add_target_options(Command& command, StatedCoding& change);

/// Adds options that describe the grid file to be written.
void add_target_options(Command& command, StatedGridForm& change);

/// Adds options that describe the restart file to be written, and header values that go into it.
void add_target_options(Command& command, StatedRestartForm& change, HeaderValues& values);

/// Options of commands that write parts of grids and, optionally, the same parts of their
/// solutions.
struct PartOptions {
  StatedGridForm grid;
  StatedRestartForm restart;
  StatedGridForm change;               ///< of both files written, except for the layout
  std::optional<Layout> layout;        ///< of the restart file written
  std::vector<std::string> solutions;  ///< those read, then the one written; empty for none

  [[nodiscard]] bool has_solution() const { return !solutions.empty(); }
  /// The solution written; empty for none. Throws a Failure if its name belongs to a format that is
  /// not written.
  [[nodiscard]] std::string solution_output() const;
  /// The stated members of the form of the restart file written.
  [[nodiscard]] StatedRestartForm restart_change() const;
};

/// Adds the options that describe the files read and written, and the option `--restart`.
/// @param values  of `--restart`
void add_part_options(Command& command, PartOptions& options, int values = 2);

/// A finite number; none for any other text.
[[nodiscard]] std::optional<double> real_in(const std::string& text);

/// The option that states the ratio of specific heats, which is for `purpose`.
[[nodiscard]] Option gamma_option(double& gamma, const std::string& purpose);

}  // namespace p3dgrid::tool
