#pragma once

#include <memory>
#include <string>
#include <vector>

#include "p3dgrid/error.hpp"
#include "p3dgrid/form.hpp"

#pragma GCC visibility push(default)

/// Checks that return all findings instead of throwing the first error. A finding is an `Error` of
/// the kind `damaged`, `unknown`, `wrong_kind`, `unsupported` or `mismatch`. A file without
/// findings can be read completely and contains nothing else. Only the first damage of a file is
/// found, because the position of the next record is unknown after it. Errors of other kinds are
/// thrown. Memory: as for detection.
namespace p3dgrid {

/// Checks a file of either kind. Of a restart file without extents only the header is compared.
[[nodiscard]] std::vector<Error> check(const std::string& path);

/// Checks a grid file, given some members of its form.
[[nodiscard]] std::vector<Error> check_grid(const std::string& path,
                                            const StatedGridForm& stated = {});

/// Checks a restart file, given some members of its form.
/// @param path    of the file
/// @param stated  known members of its form
/// @param grid    extents of its grid, with which its own are compared
[[nodiscard]] std::vector<Error> check_solution(const std::string& path,
                                                const StatedRestartForm& stated = {},
                                                const std::shared_ptr<const Extents>& grid = {});

/// The findings for each block in which a solution differs from its grid; one if the numbers of
/// blocks differ.
/// @param path       of the solution
/// @param own        its extents
/// @param grid       extents of its grid
/// @param grid_name  the grid in the reasons: "does not belong to its grid: ..."
[[nodiscard]] std::vector<Error> differing_blocks(const std::string& path, const Extents& own,
                                                  const Extents& grid,
                                                  const std::string& grid_name = "its grid");

/// The report of `checkp3drstrtheader` for a grid and a solution that differ, line by line: the
/// numbers of blocks, or else each block whose extents differ.
[[nodiscard]] std::vector<std::string> mismatch_report(const Extents& grid,
                                                       const Extents& solution);

/// Checks a grid, a restart file, and whether they describe the same blocks: each block whose
/// extents differ is a finding.
[[nodiscard]] std::vector<Error> check_pair(const std::string& grid, const std::string& solution,
                                            const StatedGridForm& stated_grid = {},
                                            const StatedRestartForm& stated_solution = {});

}  // namespace p3dgrid

#pragma GCC visibility pop
