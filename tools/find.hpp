#pragma once

#include <memory>
#include <p3dgrid/detect.hpp>
#include <string>

#include "failure.hpp"
#include "form_options.hpp"

namespace p3dgrid::tool {

/// The form of a file.
struct Found {
  Reading reading;
  std::string reason = {};      ///< why it is taken so, as part of a sentence
  std::int64_t bytes_read = 0;  ///< by detection
  bool stated = false;          ///< the whole form was stated; nothing has been compared yet
  /// Of the grid of a restart file; null if they are unknown.
  std::shared_ptr<const Extents> grid_extents = {};

  [[nodiscard]] const GridForm& grid() const { return reading.grid(); }
  [[nodiscard]] const RestartForm& restart() const { return reading.restart(); }
};

/// When to compare the file with its form.
enum class Look {
  where_needed,  ///< unless the whole form has been stated
  everywhere,    ///< always
};

/// Detects the members of a grid file's form that have not been stated. Throws a Mismatch for a
/// file that is damaged or contradicts what was stated; it names the contradiction and the options
/// that would help. If several readings fit, throws an Unusable that lists them with their options.
/// Errors of the library pass.
[[nodiscard]] Found find_grid(const std::string& path, const StatedGridForm& stated,
                              Look look = Look::where_needed);

/// The same for a restart file.
/// @param grid  extents of its grid; null if they are unknown
[[nodiscard]] Found find_restart(const std::string& path, const StatedRestartForm& stated,
                                 const std::shared_ptr<const Extents>& grid = {},
                                 Look look = Look::where_needed);

/// The same for a file of either kind.
[[nodiscard]] Found find_any(const std::string& path);

/// Compares a file with a reading of it. One that is not a regular file is taken to fit. Errors of
/// the library pass.
[[nodiscard]] Fit fit_of(const std::string& path, const Reading& reading);

/// The options that would help to read a file that is not what was stated, as part of a sentence;
/// empty if there are none.
[[nodiscard]] std::string advice(const std::string& path, const Found& found);

}  // namespace p3dgrid::tool
