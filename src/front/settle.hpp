#pragma once

#include <memory>
#include <string>

#include "p3dgrid/error.hpp"
#include "p3dgrid/layout.hpp"

/// Decides in which form a file is read.
namespace p3dgrid {

/// The form of a grid file: as stated, or detected. Throws unless there is exactly one.
[[nodiscard]] Reading settle_grid(const std::string& path, const StatedGridForm& stated);

/// The same for a restart file.
/// @param grid  extents of its grid, for layouts without extents; may be null
[[nodiscard]] Reading settle_restart(const std::string& path, const StatedRestartForm& stated,
                                     const std::shared_ptr<const Extents>& grid);

/// The same for a file of either kind.
[[nodiscard]] Reading settle_any(const std::string& path);

/// Whether blocks begin with their triplets. If the reading does not say so, the lengths of records
/// or of the file do.
[[nodiscard]] bool has_triplets(const std::string& path, const Reading& reading);

/// How far the whole file agrees with a reading. A file that is not regular is assumed to agree.
[[nodiscard]] Fit fit_of(const std::string& path, const Reading& reading);

/// The error of a file that differs from a reading.
[[nodiscard]] Error departure(const std::string& path, const Reading& reading, const Fit& fit);

/// Throws if a file that has been read differs from the form in which it was read, unless detection
/// has compared all of it.
void require_agreement(const std::string& path, const Reading& reading);

}  // namespace p3dgrid
