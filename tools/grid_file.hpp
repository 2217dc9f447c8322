#pragma once

#include <p3dgrid/grid.hpp>
#include <string>
#include <vector>

#include "find.hpp"

namespace p3dgrid::tool {

/// A grid file that is read block by block in the form that has been found. Functions throw a
/// Failure that names the file and the options that would help.
class GridInput {
 public:
  GridInput(const std::string& path, const Found& found);

  [[nodiscard]] const Extents& extents() const { return reader_.extents(); }

  /// Reads a block, counted from 0, or a range of its points.
  [[nodiscard]] Block read(std::size_t block, const IndexRange& range = {});

  /// The places of all arrays.
  [[nodiscard]] std::vector<BlockIndex> index();

  /// Compares the file with its form, unless detection has compared all of it. To be called after
  /// the last block, because a failed read has the exact place.
  void require_form() const;

 private:
  template <class Action>
  auto advised(const Action& action) const;

  const std::string& path_;
  const Found& found_;
  GridReader reader_;
};

/// Reads a whole grid.
[[nodiscard]] Grid read_grid(const std::string& path, const Found& found);

/// Writes a grid file.
void write_grid(const std::string& path, const GridForm& form, const Grid& grid);

}  // namespace p3dgrid::tool
