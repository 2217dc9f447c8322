#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/command.hpp"
#include "tools/file_input.hpp"
#include "tools/input_files.hpp"

namespace p3dgrid::tool {

/// Properties of the input file that the command line states.
struct InputOptions {
  std::string path;
  StatedForms stated;
  std::string grid_path;  ///< of a restart file
};

/// Adds the options.
void add_input_options(Command& command, InputOptions& options);

/// A grid or restart file whose header has been read, with the index of its arrays.
struct Input {
  std::string path;
  Found found;
  Extents extents = {};
  std::vector<BlockIndex> index = {};
  SolutionHeader header = {};                        ///< of a restart file
  std::vector<std::vector<double>> parameters = {};  ///< the flow parameters of each block
};

/// Detects the form of a file, like `p3dgrid info`, and makes its index. Reads no values.
[[nodiscard]] Input open_input(const InputOptions& options);

}  // namespace p3dgrid::tool
