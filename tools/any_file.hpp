#pragma once

#include <string>

#include "find.hpp"

namespace p3dgrid::tool {

/// A file that may be a grid or a restart file, and what the options say of it.
struct AnyFile {
  std::string path;
  StatedGridForm grid;
  StatedRestartForm restart;
  // The first option of each kind on the command line; empty for none.
  std::string grid_option;
  std::string restart_option;
};

/// Finds out what the file is. Any option of one kind of file says that it is of that kind, and
/// options of both are wrong usage.
[[nodiscard]] Found find_file(const AnyFile& file);

/// The same, and what the options say is compared with the file.
[[nodiscard]] Found prove_file(const AnyFile& file);

}  // namespace p3dgrid::tool
