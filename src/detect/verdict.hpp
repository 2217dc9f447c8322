#pragma once

#include <vector>

#include "p3dgrid/detect.hpp"

namespace p3dgrid {

/// A file that some reading explains to its last byte is a file of that form. Else records may
/// follow behind those of an unformatted file, whose markers prove the form; else headers alone
/// decide, where extents are unknown.
/// @param grid  extents of the grid, if it is at hand: readings with these extents go first
[[nodiscard]] Detection judge(std::vector<Reading> readings,
                              const std::shared_ptr<const Extents>& grid);

}  // namespace p3dgrid
