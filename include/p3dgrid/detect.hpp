#pragma once

#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/error.hpp"
#include "p3dgrid/form.hpp"
#include "p3dgrid/reading.hpp"

#pragma GCC visibility push(default)

/// Detection of the form of grid and restart files. A file that cannot be opened or read, or is not
/// a regular file, is an `Error`.
namespace p3dgrid {

/// Result of a detection.
struct Detection {
  /// Readings that agree with the file. With several the form is ambiguous.
  std::vector<Reading> fitting = {};
  std::vector<Reading> nearest = {};  ///< if none fits: those that agree furthest
  /// @name Set if no reading is proven: parts of a sentence, or empty
  /// @{
  std::string foreign = {};    ///< a form that cannot be read: "has integers of 64 bits; ..."
  std::string damage = {};     ///< damage of the header
  std::string beginning = {};  ///< beginning of the file
  /// @}
  std::int64_t size = 0;        ///< bytes of the file
  std::int64_t bytes_read = 0;  ///< bytes read from it

  /// Whether a reading has been compared with the whole file and agrees.
  [[nodiscard]] bool proven() const;
};

/// Detects the members of a file's form that are not stated. Text is read for less than two
/// seconds, which is at least 200 MB in lines of three values. Readings that agree up to there fit
/// `so_far`; `compare` reads all of it. Of other files only headers, markers and the length are
/// examined. Memory: at most twice the extents in the file and 64 MiB. Throws `Error`.
[[nodiscard]] Detection detect_grid(const std::string& path, const StatedGridForm& stated = {});
/// The same for a restart file.
/// @param path    of the file
/// @param stated  known members of its form
/// @param grid    extents of its grid, for layouts without extents
[[nodiscard]] Detection detect_restart(const std::string& path,
                                       const StatedRestartForm& stated = {},
                                       const std::shared_ptr<const Extents>& grid = {});
/// The same for a file of unknown kind.
[[nodiscard]] Detection detect_any(const std::string& path);

/// Compares the records of a file, and the whole of a text, with the form of a reading. Extents are
/// read from the header; those of the reading are used for layouts without extents. If the reading
/// does not say whether blocks begin with their triplets, `reads_triplets` does. Returns
/// `Agreement::whole` without a comparison if the header is invalid in this form. Throws `Error`.
[[nodiscard]] Fit compare(const std::string& path, const Reading& reading);

/// The extents in the header of a file, read in the form of a reading; null if there are none.
/// Throws `Error`.
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const std::string& path,
                                                        const Reading& reading);

}  // namespace p3dgrid

#pragma GCC visibility pop
