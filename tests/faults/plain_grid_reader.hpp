#pragma once

#include <optional>
#include <string>

#include "grid/grid_case.hpp"

namespace faults {

/// What a grid file says by the plainest reading of its format, whatever damage it has taken: the
/// result of reading it, as `result_of` puts it. Nothing if it cannot be read.
[[nodiscard]] std::optional<std::string> plain_reading(const test_support::GridForm& form,
                                                       const std::string& file);

/// All that `readp3dgrid` has brought about.
[[nodiscard]] std::string result_of(const test_support::Grid& grid);

}  // namespace faults
