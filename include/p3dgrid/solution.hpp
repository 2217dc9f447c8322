#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/array.hpp"
#include "p3dgrid/form.hpp"
#include "p3dgrid/grid.hpp"
#include "p3dgrid/reading.hpp"
#include "p3dgrid/run_data.hpp"

#pragma GCC visibility push(default)

/// Restart (flow-solution) files in the precision of their files; see `p3dgrid/grid.hpp` for
/// threads and errors.
namespace p3dgrid {

/// An array of a block: a variable, or one of the three values of its triplets.
struct FlowArray {
  std::int32_t number = 1;  ///< from 1
  bool triplet = false;     ///< a value of the triplets

  /// Compares both members.
  friend bool operator==(const FlowArray&, const FlowArray&) = default;
};

/// The flow in one block. Arrays have the order of the points of `Block`.
struct SolutionBlock {
  BlockExtents extents = {};            ///< points in the three directions
  std::vector<double> parameters = {};  ///< layout 2: Mach number, angle, Reynolds number, time
  std::vector<Reals> variables = {};    ///< variable 1 first; empty for one that is not held
  std::vector<Reals> triplets = {};     ///< layouts 100 and 101: three arrays; else none

  /// The array, which must exist.
  [[nodiscard]] const Reals& of(const FlowArray& array) const;
};

/// A solution.
struct Solution {
  RestartForm form = {};                   ///< of the file that it was read from
  RunData run = {};                        ///< values of its header
  std::vector<std::int32_t> flags = {};    ///< layout 101: the flags after the block
  std::vector<SolutionBlock> blocks = {};  ///< in file order

  /// The extents of its blocks.
  [[nodiscard]] Extents extents() const;
  /// Largest number of variables in a block.
  [[nodiscard]] std::int32_t variables() const;
};

/// What is known of a restart file before it is read.
struct SolutionOptions {
  StatedRestartForm form = {};  ///< known members of its form; the others are detected
  /// Its grid, if there is one. It gives the extents to layouts without extents; those of other
  /// layouts must agree with it.
  const Grid* grid = nullptr;
};

/// A restart file that is read block by block, or array by array.
class SolutionReader {
 public:
  /// Opens the file and reads its header.
  /// @param path     of the file
  /// @param options  what is known of it
  explicit SolutionReader(const std::string& path, const SolutionOptions& options = {});
  /// The same in a form that `detect_restart` has found. The reading has the extents.
  SolutionReader(const std::string& path, const Reading& reading);
  /// Takes over the file.
  SolutionReader(SolutionReader&&) noexcept;
  /// Closes its own file and takes over the other.
  SolutionReader& operator=(SolutionReader&&) noexcept;
  /// Closes the file.
  ~SolutionReader();

  /// The form of the file, with its sections.
  [[nodiscard]] const RestartForm& form() const;
  /// The extents of all blocks.
  [[nodiscard]] const Extents& extents() const;
  /// The values of its header.
  [[nodiscard]] const RunData& run() const;
  /// Layout 101: the flags read so far. All of them are known after `read`.
  [[nodiscard]] const std::vector<std::int32_t>& flags() const;

  /// Reads a block, counted from 0, or a range of its points. Values have the precision of the
  /// file; those of text are in double precision. Fastest in file order.
  [[nodiscard]] SolutionBlock read(std::int32_t block, const IndexRange& range = {});

  /// Reads one array of a block. Memory: that array. Fastest in file order.
  [[nodiscard]] Reals read(std::int32_t block, const FlowArray& array,
                           const IndexRange& range = {});

 private:
  class File;
  std::unique_ptr<File> file_;
};

/// What a restart file begins with.
struct SolutionHeader {
  RestartForm form = {};                     ///< of the file
  RunData run = {};                          ///< values of its header
  std::vector<std::int32_t> flags = {};      ///< layout 101: the flags to write; none means 999
  Extents extents = {};                      ///< of all blocks
  std::vector<std::int32_t> functions = {};  ///< layout 3: variables of each block
};

/// A restart file that is written block by block, or array by array.
class SolutionWriter {
 public:
  /// Creates or replaces the file and writes its header. Layout 0 cannot be written.
  /// @param path    of the file
  /// @param header  what it begins with
  SolutionWriter(const std::string& path, SolutionHeader header);
  /// Takes over the file.
  SolutionWriter(SolutionWriter&&) noexcept;
  /// Closes its own file and takes over the other.
  SolutionWriter& operator=(SolutionWriter&&) noexcept;
  /// Closes the file. Without `close` it is incomplete.
  ~SolutionWriter();

  /// Writes the next block.
  void write(const SolutionBlock& block);

  /// Writes the next block array by array.
  /// @param parameters  its flow parameters, for layout 2
  /// @param arrays      returns each array, in file order; called once for each
  void write(const std::vector<double>& parameters,
             const std::function<Reals(const FlowArray&)>& arrays);

  /// Flushes and closes the file after its last block.
  void close();

 private:
  class File;
  std::unique_ptr<File> file_;
};

/// Reads a restart file.
/// @param path     of the file
/// @param options  what is known of it
[[nodiscard]] Solution read_solution(const std::string& path, const SolutionOptions& options = {});
/// Reads a restart file in a form that `detect_restart` has found. The reading has the extents.
[[nodiscard]] Solution read_solution(const std::string& path, const Reading& reading);

/// The form in which `write_solution` writes a solution: as stated, else as it was read; with a
/// block count if there are several blocks, in the precision of its variables, with sections that
/// the layout can hold.
[[nodiscard]] RestartForm form_to_write(const Solution& solution,
                                        const StatedRestartForm& stated = {});

/// What a file in this form begins with.
[[nodiscard]] SolutionHeader header_to_write(const Solution& solution, const RestartForm& form);

/// Writes a restart file in the form that `form_to_write` returns. A failed write leaves an
/// incomplete file; invalid arguments leave an existing one unchanged.
void write_solution(const std::string& path, const Solution& solution,
                    const StatedRestartForm& stated = {});
/// The same with members of the coding stated.
inline void write_solution(const std::string& path, const Solution& solution,
                           const StatedCoding& stated) {
  write_solution(path, solution, StatedRestartForm{.coding = stated});
}

}  // namespace p3dgrid

#pragma GCC visibility pop
