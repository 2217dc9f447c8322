#pragma once

#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// A reading of a file and the records that it expects.
struct Candidate {
  Reading reading;
  FilePlan plan;
};

/// The codings that are possible of a file and have not been ruled out by what is stated.
[[nodiscard]] std::vector<Coding> codings_of(Evidence& file, const StatedCoding& stated);

/// All readings of the file as a grid whose header is plausible.
[[nodiscard]] std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                                     EmptyBlocks empty);

/// Compares candidates with the file, those of one coding side by side.
[[nodiscard]] std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates);

/// The readings of a grid, and two-dimensional grids of the same length where they are possible.
[[nodiscard]] std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated,
                                                 std::vector<Reading> readings);

/// All readings of the file as a restart file whose header is plausible, compared with the file.
/// @param grid    extents of its grid, for layouts that hold none
/// @param others  candidates of another kind, to be compared with text in the same pass
[[nodiscard]] std::vector<Reading> restart_readings(Evidence& file, const StatedRestartForm& stated,
                                                    const std::shared_ptr<const Extents>& grid,
                                                    EmptyBlocks empty,
                                                    std::vector<Candidate> others = {});

/// The values that a choice leaves open.
template <class Choice>
[[nodiscard]] std::vector<Choice> choices(const std::optional<Choice>& stated,
                                          std::vector<Choice> all) {
  return stated ? std::vector<Choice>{*stated} : all;
}

}  // namespace p3dgrid
