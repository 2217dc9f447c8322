#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <p3dgrid/index_range.hpp>
#include <string>
#include <vector>

#include "input_files.hpp"
#include "options.hpp"
#include "output_file.hpp"

/// Files that consist of parts of other files. One block of a grid, or one array of a solution, is
/// in memory at a time.
namespace p3dgrid::tool {

/// Finds the forms of grids and, if `--restart` is given, of their solutions.
/// @param usage  of the command with a solution, for messages
[[nodiscard]] std::deque<CaseInput> open_cases(const PartOptions& options, const Usage& usage);

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

/// Writes a solution. Returns a summary, one line.
/// @param change  the stated members of its form; the others are those of the first input
[[nodiscard]] std::string write_restart(const OutputFile& output, const Parts& parts,
                                        const StatedRestartForm& change,
                                        const HeaderValues& values);

/// A grid that is written from parts and, if `--restart` is given, its solution.
class PartOutput {
 public:
  /// Reserves the files.
  /// @param grid      path
  /// @param solution  path; ignored without `--restart`
  PartOutput(const PartOptions& options, std::string grid, std::string solution);

  void write(const Parts& parts);

  /// Renames the files into place and prints the summaries.
  void commit();

 private:
  const PartOptions& options_;
  std::optional<OutputFile> grid_;
  std::optional<OutputFile> solution_;
  std::string grid_summary_;
  std::string solution_summary_;
};

/// Writes the parts that `parts_of` chooses, and prints the summaries.
void write_parts(const PartOptions& options, const Usage& usage,
                 const std::function<Parts(std::deque<CaseInput>&)>& parts_of);

}  // namespace p3dgrid::tool
