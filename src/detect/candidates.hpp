#pragma once

#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// A way to take a file, with the records that it asks for.
struct Candidate {
  Reading reading;
  FilePlan plan;
};

/// The codings that are possible of a file and have not been ruled out by what is stated.
[[nodiscard]] std::vector<Coding> codings_of(Evidence& file, const StatedCoding& stated);

/// Every way to take the file as a grid whose header can be one.
[[nodiscard]] std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                                     EmptyBlocks empty);

/// Compares candidates with the file, those of one coding side by side.
[[nodiscard]] std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates);

/// The readings of a grid, and what a binary file may be instead that is as long as one of them.
[[nodiscard]] std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated,
                                                 std::vector<Reading> readings);

/// Every way to take the file as a restart file whose header can be one, compared with it.
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
