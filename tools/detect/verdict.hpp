#pragma once

#include <vector>

#include "detect/reading.hpp"

namespace p3dgrid {

/// What comes of all readings of a file.
struct Verdict {
  std::vector<Reading> fitting;  ///< those that the file bears out; of one the form is clear
  std::vector<Reading> nearest;  ///< where none is: those that agree furthest
};

/// A file that some reading explains to its last byte is a file of that form. Else records may
/// follow behind those of an unformatted file, whose markers prove the form; else headers alone
/// decide, where extents are unknown.
/// @param grid  extents of the grid, if it is at hand: readings with these extents go first
[[nodiscard]] Verdict judge(std::vector<Reading> readings, const std::optional<Extents>& grid);

}  // namespace p3dgrid
