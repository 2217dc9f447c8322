#pragma once

#include <p3dgrid/grid.hpp>
#include <p3dgrid/solution.hpp>
#include <string>
#include <vector>

#include "find.hpp"

namespace p3dgrid::tool {

/// A file that is read in the form that has been found. Functions throw a Failure that names the
/// file and the options that would help.
template <class Reader>
class FileInput {
 public:
  FileInput(const std::string& path, const Found& found);

  /// The places of all arrays.
  [[nodiscard]] std::vector<BlockIndex> index();

  /// Compares the file with its form, once, unless detection has compared all of it. To be called
  /// after the last array, because a failed read has the exact place.
  void require_form();

 protected:
  /// Runs an action on the file.
  template <class Action>
  auto advised(const Action& action) const;

  [[nodiscard]] const Reader& reader() const { return reader_; }
  [[nodiscard]] Reader& reader() { return reader_; }

 private:
  const std::string& path_;
  const Found& found_;
  Reader reader_;
  bool compared_ = false;
};

/// A grid file that is read block by block.
class GridInput : public FileInput<GridReader> {
 public:
  using FileInput::FileInput;

  [[nodiscard]] const Extents& extents() const { return reader().extents(); }

  /// Reads a block, counted from 0, or a range of its points.
  [[nodiscard]] Block read(std::size_t block, const IndexRange& range = {});
};

/// A restart file that is read array by array.
class RestartInput : public FileInput<SolutionReader> {
 public:
  using FileInput::FileInput;

  [[nodiscard]] const SolutionHeader& header() const { return reader().header(); }
  [[nodiscard]] std::vector<double> parameters(std::size_t block);
  [[nodiscard]] SolutionBlock read(std::size_t block);
  [[nodiscard]] Reals read(std::size_t block, const FlowArray& array, const IndexRange& range = {});
};

/// Whether a solution has the array.
[[nodiscard]] bool holds(const SolutionHeader& header, const FlowArray& array);

/// The sections with those of extensions.
[[nodiscard]] Sections all_sections(const SolutionHeader& header);

/// Throws a Failure for a file that cannot be read more than once.
void require_regular_file(const std::string& path);

}  // namespace p3dgrid::tool
