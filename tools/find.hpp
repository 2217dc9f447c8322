#pragma once

#include <optional>
#include <p3dgrid/detect.hpp>
#include <string>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// What has been found out of a file.
struct Found {
  Reading reading;
  std::string reason = {};      ///< what shows it, as part of a sentence
  std::int64_t bytes_read = 0;  ///< that it took to see that
  bool stated = false;          ///< the user has said it all, and nothing has been compared yet

  [[nodiscard]] const GridForm& grid() const { return reading.grid(); }
  [[nodiscard]] const RestartForm& restart() const { return reading.restart(); }
};

/// Finds out what of a grid file's form has not been stated; where all of it has, without looking
/// at the file. Throws a Failure that names the file: an Unreadable where it is damaged or is not
/// what has been stated, with what contradicts it and the options that would help; with
/// `ExitStatus::unusable` where several readings fit, with all of them and their options.
[[nodiscard]] Found find_grid(const std::string& path, const StatedGridForm& stated);

/// The same of a restart file.
/// @param grid  extents of its grid, if it is at hand
[[nodiscard]] Found find_restart(const std::string& path, const StatedRestartForm& stated,
                                 const std::optional<Extents>& grid);

/// The same, and what has been stated is compared with the file as well.
[[nodiscard]] Found prove_grid(const std::string& path, const StatedGridForm& stated);
[[nodiscard]] Found prove_restart(const std::string& path, const StatedRestartForm& stated,
                                  const std::optional<Extents>& grid);

/// The same of a file of which nothing is known.
[[nodiscard]] Found find_any(const std::string& path);

/// What the records of a file have against a form; whole where nothing has, and of a file that is
/// not a regular one.
[[nodiscard]] Fit fit_of(const std::string& path, const GridForm& form);
/// @param extents   by which the body is taken
/// @param triplets  blocks begin with them
[[nodiscard]] Fit fit_of(const std::string& path, const RestartForm& form, const Extents& extents,
                         bool triplets);
/// The same of all the text of which detection has compared a part.
[[nodiscard]] Fit fit_of(const std::string& path, const Reading& reading);

/// The options that would help to read a file that is not what was stated, as part of a sentence;
/// empty where nothing better is known.
[[nodiscard]] std::string advice(const std::string& path, const StatedGridForm& stated);
[[nodiscard]] std::string advice(const std::string& path, const StatedRestartForm& stated,
                                 const std::optional<Extents>& grid);

}  // namespace p3dgrid::tool
