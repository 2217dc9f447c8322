#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "form_options.hpp"
#include "restart_conversion.hpp"

namespace p3dgrid::tool {

/// A file or folder that the command works on, as a required argument. `path` must outlive the
/// parsing.
CLI::Option* add_path(CLI::App& command, const std::string& name, std::string& path,
                      const std::string& description);

/// Options that describe the grid file to be read; what none of them says is left open. `stated`
/// must outlive the parsing.
void add_grid_options(CLI::App& command, StatedGridForm& stated);

/// Options that describe the grid file to be written.
void add_target_options(CLI::App& command, StatedGridForm& change);

/// Options that describe the restart file to be read; `stated` as for `add_grid_options`.
void add_restart_options(CLI::App& command, StatedRestartForm& stated);

/// Options that describe the restart file to be written, and header values that go into it.
void add_restart_target_options(CLI::App& command, StatedRestartForm& change, HeaderValues& values);

/// The option that states the ratio of specific heats, which is for `purpose`.
CLI::Option* add_gamma(CLI::App& command, double& gamma, const std::string& purpose);

/// The option that names the grid of a restart file.
void add_grid_of_restart(CLI::App& command, std::string& path);

/// The first option of the group that `add_grid_options` or `add_restart_options` adds and that has
/// been given on the command line; empty for none.
[[nodiscard]] std::string given_grid_option(const CLI::App& command);
[[nodiscard]] std::string given_restart_option(const CLI::App& command);

}  // namespace p3dgrid::tool
