#pragma once

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "options.hpp"
#include "parts.hpp"

namespace p3dgrid::tool {

/// Finds the forms of grids and, if `--restart` is given, of their solutions.
/// @param usage  of the command with a solution, for messages
[[nodiscard]] std::deque<CaseInput> open_cases(const PartOptions& options,
                                               const std::vector<std::string>& grids,
                                               const Usage& usage);

/// A grid that is written from parts and, if `--restart` is given, its solution.
class PartOutput {
 public:
  /// Reserves the files.
  /// @param grids     that are read
  /// @param solution  path of the solution; ignored without `--restart`
  PartOutput(const PartOptions& options, const std::vector<std::string>& grids, std::string grid,
             std::string solution);

  void write(const Parts& parts);

  /// Renames the files into place and prints the summaries.
  void commit();

 private:
  /// A file, and the summary of its contents.
  struct File {
    File(std::string path_of_file, const std::vector<std::string>& inputs)
        : path(std::move(path_of_file)), output(path, inputs) {}

    std::string path;
    OutputFile output;
    std::string summary = {};
  };

  const PartOptions& options_;
  std::optional<File> grid_;
  std::optional<File> solution_;
};

}  // namespace p3dgrid::tool
