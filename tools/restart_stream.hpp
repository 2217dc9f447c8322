#pragma once

#include <optional>
#include <span>
#include <string>

#include "restart_file.hpp"

namespace p3dgrid::tool {

/// Why a file of one form cannot be streamed into one of the other with the result of a whole read
/// and write, as part of a sentence; empty when it can.
[[nodiscard]] std::string obstacle_to_streaming(const RestartForm& read,
                                                const RestartForm& written);

/// The same of what shows only in the file read.
[[nodiscard]] std::string obstacle_to_streaming(const std::string& path, const RestartForm& read,
                                                const Restart& restart);

/// A restart file that is read one variable at a time, for solutions that memory does not hold.
class RestartStream {
 public:
  /// @param grid  extents of the grid, for layouts that hold none; it must outlive the stream
  RestartStream(const std::string& path, const Found& found, const std::optional<Extents>& grid)
      : path_(path), found_(found), form_(found.restart()), grid_(grid) {}

  /// The solution but for its flow variables and triplets, the whole file read once and found
  /// sound. Throws a Failure as `read_restart` does.
  [[nodiscard]] Restart begin();

  /// One variable at all points; good until the next call. Needs `begin`.
  [[nodiscard]] std::span<const float> read(mod_p3dgrid::integer variable);

  /// Writes the solution in another form, the flow variables by way of temporary files beside
  /// `path`. Needs `begin`.
  /// @param shown  name of the file written, for messages
  void write(const std::string& path, const std::string& shown, const RestartForm& written,
             const Restart& restart);

 private:
  void read_variable(mod_p3dgrid::integer variable, mod_p3dgrid::integer variables);

  const std::string& path_;
  const Found& found_;
  const RestartForm& form_;
  const std::optional<Extents>& grid_;
  Extents extents_;
  Sections in_blocks_;                         ///< sections of the file read, without extensions
  mod_p3dgrid::integer variables_ = 0;         ///< of the file read, extensions among them
  std::vector<mod_p3dgrid::integer> points_;   ///< of each block
  mod_p3dgrid::allocatable<float, 2> values_;  ///< (1, point)
};

}  // namespace p3dgrid::tool
