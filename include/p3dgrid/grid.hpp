#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/array.hpp"
#include "p3dgrid/detect.hpp"
#include "p3dgrid/error.hpp"
#include "p3dgrid/form.hpp"
#include "p3dgrid/index.hpp"
#include "p3dgrid/index_range.hpp"

#pragma GCC visibility push(default)

/// Grids in memory, in the precision of their files. Functions keep no state between calls, so
/// threads can work on different files, or read the same one, at the same time. All of them throw
/// `Error`, and `std::bad_alloc` without memory.
namespace p3dgrid {

/// One block of a grid. Point (i, j, k), each counted from 0, is element
/// `i + extents.i * (j + extents.j * k)` of each array.
struct Block {
  BlockExtents extents = {};        ///< points in the three directions
  Reals x = {};                     ///< first coordinate, in the unit of the file
  Reals y = {};                     ///< second coordinate
  Reals z = {};                     ///< third coordinate
  Array<std::int32_t> iblank = {};  ///< blanking values; empty for a grid without blanking
};

/// A grid.
struct Grid {
  GridForm form = {};              ///< of the file that it was read from
  std::vector<Block> blocks = {};  ///< in file order

  /// The extents of its blocks.
  [[nodiscard]] Extents extents() const;
};

/// Memory of the caller for the points of a block, one value each in every array.
struct BlockMemory {
  /// For x, y and z: floats or doubles.
  std::array<void*, 3> coordinates = {};
  std::int32_t* iblank = nullptr;  ///< for blanking values, if the grid has them
};

/// Returns memory for a block with these extents and reals of this precision.
using BlockAllocator = std::function<BlockMemory(Precision, const BlockExtents&)>;

/// A grid file that is read block by block. Copies share the open file.
class GridReader {
 public:
  /// Opens the file and reads its header. Members of the form that are not stated are detected.
  /// With several possible forms, with none, and for a file of another kind or form, throws.
  explicit GridReader(const std::string& path, const StatedGridForm& stated = {});
  /// The same in a form that `detect_grid` has found.
  GridReader(const std::string& path, const Reading& reading);

  /// The form of the file.
  [[nodiscard]] const GridForm& form() const;
  /// The form, and how far detection has compared the file with it.
  [[nodiscard]] const Reading& reading() const;
  /// The extents of all blocks.
  [[nodiscard]] const Extents& extents() const;

  /// Reads a block, counted from 0, or a range of its points. Coordinates have the precision of the
  /// file; those of text are in double precision. Fastest in file order; for an earlier block the
  /// file is opened again.
  [[nodiscard]] Block read(std::int32_t block, const IndexRange& range = {});
  /// The same, into memory of the caller.
  /// @param block     counted from 0
  /// @param allocate  called once, after the file has been found long enough for the points
  /// @param range     of its points
  void read(std::int32_t block, const BlockAllocator& allocate, const IndexRange& range = {});

  /// Throws if the file does not agree with its form. The functions that read blocks compare only
  /// what they read.
  void require_agreement() const;

  /// The byte ranges of the arrays of a block, counted from 0. Reads no values.
  [[nodiscard]] BlockIndex locate(std::int32_t block);

 private:
  struct File;
  std::shared_ptr<File> file_;
};

/// A grid file that is written block by block. Without `close` it stays incomplete. Copies share
/// the open file.
class GridWriter {
 public:
  /// Creates or replaces the file and writes its header.
  /// @param path     of the file
  /// @param form     of the file
  /// @param extents  of all blocks
  GridWriter(const std::string& path, const GridForm& form, const Extents& extents);

  /// Writes the next block. Its extents must be those announced. Coordinates are rounded if the
  /// file has single precision; text gets the shortest digits that give the same values. Missing
  /// blanking values are written as 1.
  void write(const Block& block);

  /// Leaves a gap for the values of the next block, which are then written by other means at the
  /// positions that `index_grid` returns. In a new file they are 0 until then. Not for text.
  void reserve();

  /// Flushes and closes the file after its last block.
  void close();

 private:
  struct File;
  std::shared_ptr<File> file_;
};

/// Reads a grid file. Members of its form that are not stated are detected.
[[nodiscard]] Grid read_grid(const std::string& path, const StatedGridForm& stated = {});

/// The byte ranges of all arrays of a grid file. Reads no values; memory grows with the number of
/// blocks. Members of its form that are not stated are detected.
[[nodiscard]] Index index_grid(const std::string& path, const StatedGridForm& stated = {});

/// The form in which `write_grid` writes a grid: as stated, else as it was read; with a block count
/// if there are several blocks, with blanking if it has blanking values, in the precision of its
/// coordinates.
[[nodiscard]] GridForm form_to_write(const Grid& grid, const StatedGridForm& stated = {});

/// Writes a grid file in the form that `form_to_write` returns. A failed write leaves an incomplete
/// file; invalid arguments leave an existing one unchanged.
void write_grid(const std::string& path, const Grid& grid, const StatedGridForm& stated = {});
/// The same with members of the coding stated.
inline void write_grid(const std::string& path, const Grid& grid, const StatedCoding& stated) {
  write_grid(path, grid, StatedGridForm{.coding = stated});
}

}  // namespace p3dgrid

#pragma GCC visibility pop
