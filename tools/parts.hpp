#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <p3dgrid/index_range.hpp>
#include <string>
#include <vector>

#include "file_input.hpp"
#include "input_files.hpp"
#include "output_file.hpp"
#include "restart_conversion.hpp"

/// Files that consist of parts of other files. One block of a grid, or one array of a solution, is
/// in memory at a time.
namespace p3dgrid::tool {

/// A grid, and its solution if there is one, that a command reads.
class CaseInput {
 public:
  /// Finds the form of a grid alone.
  CaseInput(std::string path, const StatedGridForm& stated, const std::string& meant);
  /// Finds the forms of a grid and of its solution.
  CaseInput(std::string grid_path, const StatedGridForm& grid, std::string restart_path,
            const StatedRestartForm& restart, const Usage& usage);
  CaseInput(const CaseInput&) = delete;
  CaseInput& operator=(const CaseInput&) = delete;
  ~CaseInput() = default;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& restart_path() const { return restart_path_; }
  [[nodiscard]] const GridForm& form() const { return found_.grid.grid(); }
  [[nodiscard]] const RestartForm& restart_form() const { return found_.restart.restart(); }
  [[nodiscard]] const Extents& extents() const;
  [[nodiscard]] GridInput& grid() const;
  [[nodiscard]] RestartInput& restart() const;

 private:
  std::string path_;
  std::string restart_path_;
  Case found_;
  // Opened when they are needed: `restart` does not read the grid.
  mutable std::optional<GridInput> grid_;
  mutable std::optional<RestartInput> restart_;
};

/// A block of an output file: a part of a block of an input, whose directions are then reordered.
struct Part {
  std::size_t input = 0;
  std::size_t block = 0;
  IndexRange range = {};
  Orientation orientation = {};
};

/// The blocks of an output file.
struct Parts {
  std::deque<CaseInput>& inputs;
  std::vector<Part> list;
  std::function<void(Block&)> edit_block = {};                    ///< applied to each block
  std::function<void(const FlowArray&, Reals&)> edit_array = {};  ///< applied to each array

  [[nodiscard]] BlockExtents extents_of(const Part& part) const;
  [[nodiscard]] Extents extents() const;
};

/// All blocks of the inputs.
[[nodiscard]] std::vector<Part> whole_blocks(const std::deque<CaseInput>& inputs);

/// Writes a grid. Returns a summary, one line.
/// @param path    of the file that `output` replaces
/// @param change  the stated members of its form; the others are those of the first input
[[nodiscard]] std::string write_grid(const OutputFile& output, const std::string& path,
                                     const Parts& parts, const StatedGridForm& change);

/// Writes a solution. Returns a summary, one line.
[[nodiscard]] std::string write_restart(const OutputFile& output, const std::string& path,
                                        const Parts& parts, const StatedRestartForm& change,
                                        const HeaderValues& values);

}  // namespace p3dgrid::tool
