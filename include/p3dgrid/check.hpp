#pragma once

#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/error.hpp"
#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// Checks that return everything they find instead of throwing the first error. What they find is
/// an `Error` of the kind `damaged`, `unknown`, `wrong_kind`, `unsupported` or `mismatch`; without
/// any the file is read without a failure, and holds nothing besides. Of each file the first damage
/// is found, as where the next record begins is not known behind it. Errors of the other kinds are
/// thrown. Memory: as for detection.
namespace p3dgrid {

/// Checks a file of either kind. A restart file without extents is compared as far as its header.
[[nodiscard]] std::vector<Error> check(const std::string& path);

/// Checks a grid file of which members of the form are stated.
[[nodiscard]] std::vector<Error> check_grid(const std::string& path,
                                            const StatedGridForm& stated = {});

/// Checks a restart file of which members of the form are stated.
/// @param path    of the file
/// @param stated  known members of its form
/// @param grid    extents of its grid, with which its own are compared
[[nodiscard]] std::vector<Error> check_solution(const std::string& path,
                                                const StatedRestartForm& stated = {},
                                                const std::shared_ptr<const Extents>& grid = {});

/// Checks a grid, a restart file, and whether they describe the same blocks: each block whose
/// extents differ is a finding.
[[nodiscard]] std::vector<Error> check_pair(const std::string& grid, const std::string& solution,
                                            const StatedGridForm& stated_grid = {},
                                            const StatedRestartForm& stated_solution = {});

}  // namespace p3dgrid

#pragma GCC visibility pop
