#pragma once

#include <optional>
#include <string>

#include "extents.hpp"
#include "restart_form.hpp"
#include "restart_header.hpp"

namespace p3dgrid {

/// True when the lengths in the file are those of that form. A file that cannot be read does not
/// fit.
/// @param grid  extents of the grid, for layouts that hold none
[[nodiscard]] bool lengths_fit(const std::string& path, const RestartForm& form,
                               const std::optional<Extents>& grid);

/// What to try instead of `stated`, as part of a sentence; empty when nothing better is known. Only
/// advice for people comes of it: a file is always read in the form that the user states.
[[nodiscard]] std::string restart_advice(const std::string& path, const RestartForm& stated,
                                         const std::optional<Extents>& grid);

/// Reads a header alone; a Failure comes with the advice for the file.
[[nodiscard]] RestartHeader header_with_advice(const std::string& path, const RestartForm& form);

}  // namespace p3dgrid
