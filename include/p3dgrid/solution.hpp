#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/array.hpp"
#include "p3dgrid/form.hpp"
#include "p3dgrid/grid.hpp"
#include "p3dgrid/index.hpp"
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
  std::vector<double> parameters = {};  ///< of the flow, see `parameter_names`
  std::vector<Reals> variables = {};    ///< variable 1 first; empty for one that is not held
  std::vector<Reals> triplets = {};     ///< layouts 100 and 101: three arrays; else none

  /// The array; empty if the block does not hold it.
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

/// What is known of a restart file besides its arrays.
struct SolutionHeader {
  RestartForm form = {};                     ///< of the file, with its sections
  RunData run = {};                          ///< values of its header
  std::vector<std::int32_t> flags = {};      ///< layout 101: flags after the block; none means 999
  std::int32_t blocks = 1;                   ///< number of blocks
  Extents extents = {};                      ///< of all blocks; empty while unknown
  std::vector<std::int32_t> variables = {};  ///< highest number of a variable of each block
  bool triplets = false;                     ///< blocks read begin with their triplets

  /// The highest of all blocks.
  [[nodiscard]] std::int32_t most_variables() const;
  /// Variables up to the highest that no record holds.
  [[nodiscard]] Sections missing() const;
};

/// A restart file that is read block by block, or array by array. Copies share the open file.
class SolutionReader {
 public:
  /// Opens the file and reads its header.
  /// @param path     of the file
  /// @param options  what is known of it
  explicit SolutionReader(const std::string& path, const SolutionOptions& options = {});
  /// The same in a form that `detect_restart` has found. The reading has the extents; without them
  /// arrays cannot be read.
  SolutionReader(const std::string& path, const Reading& reading);

  /// What is known of the file besides its arrays.
  [[nodiscard]] const SolutionHeader& header() const;
  /// The form, and how far detection has compared the file with it.
  [[nodiscard]] const Reading& reading() const;

  /// Reads the flow parameters of a block, counted from 0; none in layouts without them.
  [[nodiscard]] std::vector<double> parameters(std::int32_t block);

  /// Reads a block, counted from 0, or a range of its points. Values have the precision of the
  /// file; those of text are in double precision. Fastest in file order.
  [[nodiscard]] SolutionBlock read(std::int32_t block, const IndexRange& range = {});

  /// Reads one array of a block. Memory: that array. Fastest in file order.
  [[nodiscard]] Reals read(std::int32_t block, const FlowArray& array,
                           const IndexRange& range = {});

  /// The byte ranges of the arrays of a block, counted from 0. Reads no values.
  [[nodiscard]] BlockIndex locate(std::int32_t block);

  /// Throws if the file does not agree with its form. The functions that read blocks compare only
  /// what they read.
  void require_agreement() const;

 private:
  struct File;
  std::shared_ptr<File> file_;
};

/// A restart file that is written block by block, or array by array. Without `close` it stays
/// incomplete. Copies share the open file.
class SolutionWriter {
 public:
  /// Creates or replaces the file and writes its header. Layout 0 cannot be written.
  /// @param path    of the file
  /// @param header  its form, header values and extents
  SolutionWriter(const std::string& path, SolutionHeader header);

  /// Writes the next block.
  void write(const SolutionBlock& block);

  /// Writes the next block array by array.
  /// @param parameters  its flow parameters, for layout 2
  /// @param arrays      returns each array, in file order; called once for each
  void write(const std::vector<double>& parameters,
             const std::function<Reals(const FlowArray&)>& arrays);

  /// Leaves gaps for the arrays of the next block, which are then written by other means at the
  /// positions that `index_solution` returns. In a new file they are 0 until then. Not for text.
  /// @param parameters  its flow parameters, for layout 2
  void reserve(const std::vector<double>& parameters);

  /// Flushes and closes the file after its last block.
  void close();

 private:
  struct File;
  std::shared_ptr<File> file_;
};

/// Reads a restart file.
/// @param path     of the file
/// @param options  what is known of it
[[nodiscard]] Solution read_solution(const std::string& path, const SolutionOptions& options = {});

/// The byte ranges of all arrays of a restart file. Reads no values; memory grows with the number
/// of blocks.
/// @param path     of the file
/// @param options  what is known of it
[[nodiscard]] Index index_solution(const std::string& path, const SolutionOptions& options = {});

/// The header with which a solution is written. Members of the form that are not stated stay as
/// read, but several blocks get a block count, and the sections are those that the layout can hold.
[[nodiscard]] SolutionHeader header_to_write(const SolutionHeader& read,
                                             const StatedRestartForm& stated = {});
/// The same for a solution. The precision is that of its variables unless it is stated.
[[nodiscard]] SolutionHeader header_to_write(const Solution& solution,
                                             const StatedRestartForm& stated = {});

/// Writes a restart file in the form of `header_to_write`. A failed write leaves an incomplete
/// file; invalid arguments leave an existing one unchanged.
void write_solution(const std::string& path, const Solution& solution,
                    const StatedRestartForm& stated = {});
/// The same with members of the coding stated.
inline void write_solution(const std::string& path, const Solution& solution,
                           const StatedCoding& stated) {
  write_solution(path, solution, StatedRestartForm{.coding = stated});
}

}  // namespace p3dgrid

#pragma GCC visibility pop
