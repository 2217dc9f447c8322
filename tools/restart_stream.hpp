#pragma once

#include <optional>
#include <span>
#include <string>

#include "library.hpp"
#include "output_file.hpp"
#include "restart_file.hpp"

namespace p3dgrid::tool {

/// Why streaming from one form to the other would not give the result of a whole read and write, as
/// part of a sentence; empty if it does.
[[nodiscard]] std::string obstacle_to_streaming(const RestartForm& read,
                                                const RestartForm& written);

/// The same, as far as it depends on the contents of the file.
[[nodiscard]] std::string obstacle_to_streaming(const std::string& path, const RestartForm& read,
                                                const Restart& restart);

/// A restart file that is read one variable at a time, for solutions larger than memory.
class RestartStream {
 public:
  /// @param grid  extents of the grid, for layouts that hold none
  RestartStream(const std::string& path, const Found& found, std::optional<Extents> grid)
      : path_(path), found_(found), form_(found.restart()), grid_(std::move(grid)) {}

  /// Reads the file once and returns the solution without flow variables and triplets. Throws a
  /// Failure as `read_restart` does.
  [[nodiscard]] Restart begin();

  /// One variable at all points; valid until the next call. Needs `begin`.
  [[nodiscard]] std::span<const float> read(integer variable);

  /// Writes the solution in another form, the flow variables by way of temporary files beside the
  /// output. Needs `begin`.
  void write(const OutputFile& output, const RestartForm& written, const Restart& restart);

 private:
  void read_first(Restart& restart);
  void read_variable(integer variable, integer variables);

  const std::string& path_;
  const Found& found_;
  const RestartForm& form_;
  std::optional<Extents> grid_;
  Extents extents_;
  Sections in_blocks_;            ///< sections of the file read, without extensions
  integer variables_ = 0;         ///< of the file read, extensions among them
  std::vector<integer> points_;   ///< of each block
  allocatable<float, 2> values_;  ///< (1, point)
};

}  // namespace p3dgrid::tool
