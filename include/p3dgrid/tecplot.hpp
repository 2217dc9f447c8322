#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/grid.hpp"

#pragma GCC visibility push(default)

namespace p3dgrid {

/// A Tecplot text file that is written zone by zone, in the memory of the block that the caller
/// holds. It has a line with the names of its columns and, for each zone, a line with the extents
/// and a line for each point, i fastest. Copies share the open file. Threads and errors as in
/// `p3dgrid/grid.hpp`.
class TecplotWriter {
 public:
  /// The usual names of five flow variables: velocities, pressure and density.
  static constexpr std::array flow_names = {"U", "V", "W", "P", "RHO"};
  /// The largest extent of a block, for which a zone line has four digits.
  static constexpr std::int32_t largest_extent = 9999;

  /// Creates or replaces the file and writes the names of its columns: X, Y, Z, those of the
  /// variables, and IBLANK.
  /// @param path       of the file
  /// @param variables  their names, without quotation marks and control characters
  /// @param iblank     whether there is a column of blanking values
  TecplotWriter(const std::string& path, const std::vector<std::string>& variables,
                bool iblank = false);

  /// Writes the next block. Reals have the shortest digits that give the same value in double
  /// precision, and any NaN is `NaN`. Missing blanking values are written as 1.
  /// @param block      coordinates and blanking values
  /// @param variables  an array with a value for each point for each of the names
  void write(const Block& block, const std::vector<Reals>& variables);

  /// Flushes and closes the file. Without it the file stays incomplete.
  void close();

 private:
  struct File;
  std::shared_ptr<File> file_;
};

}  // namespace p3dgrid

#pragma GCC visibility pop
