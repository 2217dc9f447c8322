#pragma once

#include <optional>
#include <p3dgrid/solution.hpp>
#include <string>
#include <vector>

#include "find.hpp"

namespace p3dgrid::tool {

/// A restart file that is read array by array in the form that has been found. Functions throw a
/// Failure that names the file and the options that would help.
class RestartInput {
 public:
  /// @param grid  extents of the grid; needed for layouts that hold none
  RestartInput(const std::string& path, const Found& found, const std::optional<Extents>& grid);

  [[nodiscard]] const SolutionHeader& header() const { return reader_.header(); }
  [[nodiscard]] std::vector<double> parameters(std::size_t block);
  [[nodiscard]] SolutionBlock read(std::size_t block);
  [[nodiscard]] Reals read(std::size_t block, const FlowArray& array, const IndexRange& range = {});

  /// The places of all arrays.
  [[nodiscard]] std::vector<BlockIndex> index();

  /// Compares the file with its form, unless detection has compared all of it. To be called after
  /// the last array, because a failed read has the exact place.
  void require_form() const;

 private:
  template <class Action>
  auto advised(const Action& action) const;

  const std::string& path_;
  const Found& found_;
  const std::optional<Extents> grid_;
  SolutionReader reader_;
};

/// The sections with those of extensions.
[[nodiscard]] Sections all_sections(const SolutionHeader& header);

/// Reads a whole solution.
[[nodiscard]] Solution read_restart(const std::string& path, const Found& found,
                                    const std::optional<Extents>& grid);

/// Writes a restart file.
void write_restart(const std::string& path, const RestartForm& form, const Solution& solution);

/// Announces the values of a restart file for the progress.
void expect_arrays(const SolutionHeader& header);

/// Throws a Failure for a file that cannot be read more than once, such as a pipe.
void require_regular_file(const std::string& path);

}  // namespace p3dgrid::tool
