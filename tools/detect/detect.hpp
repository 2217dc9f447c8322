#pragma once

#include <optional>
#include <string>

#include "detect/found.hpp"
#include "restart_plan.hpp"

namespace p3dgrid {

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
[[nodiscard]] Fit fit_of(const std::string& path, const GridForm& form, const Extents& extents);
[[nodiscard]] Fit fit_of(const std::string& path, const RestartForm& form,
                         const RestartShape& shape);

/// The options that would help to read a file that is not what was stated, as part of a sentence;
/// empty where nothing better is known.
[[nodiscard]] std::string advice(const std::string& path, const StatedGridForm& stated);
[[nodiscard]] std::string advice(const std::string& path, const StatedRestartForm& stated,
                                 const std::optional<Extents>& grid);

}  // namespace p3dgrid
