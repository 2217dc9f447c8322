#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "grid_form.hpp"

namespace p3dgrid {

/// A file or folder that the command works on, as a required argument. `path` must outlive the
/// parsing.
void add_path(CLI::App& command, const std::string& name, std::string& path,
              const std::string& description);

/// Options that describe the grid file to be read. `form` must outlive the parsing; it starts as
/// the default and is changed by the options that are given.
void add_grid_options(CLI::App& command, GridForm& form);

/// Options that describe the file to be written.
void add_target_options(CLI::App& command, GridFormChange& change);

}  // namespace p3dgrid
