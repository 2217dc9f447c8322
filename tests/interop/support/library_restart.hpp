#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/restart_form.hpp"
#include "support/solution.hpp"

namespace interop {

/// What a whole read with the library has brought.
struct ReadRestart {
  Solution solution;             ///< zeros where nothing is known to have been read
  std::int64_t rows;             ///< of the flow array
  std::int64_t points;           ///< of the flow array
  int repeated_allocations = 0;  ///< of arrays that were allocated already
};

/// Reads a restart file with the library, which begins as in a new run; nothing if it reports a
/// failed read. The flow is taken over for the variables that the form holds.
[[nodiscard]] std::optional<ReadRestart> read_restart_with_library(
    const std::string& path, const RestartForm& form, const std::vector<Extents>& extents);

/// The extents in the header of a restart file, or nothing if the library reports a failed read.
[[nodiscard]] std::optional<std::vector<Extents>> read_restart_extents_with_library(
    const std::string& path, const RestartForm& form);

/// Writes a restart file with the library and closes it.
void write_restart_with_library(const std::string& path, const RestartForm& form,
                                const Solution& solution);

/// The solution as a whole read with the library delivers it: older time levels are skipped, and
/// the triplets of layout 100 do not arrive from records.
[[nodiscard]] Solution as_delivered(const RestartForm& form, const Solution& solution);

}  // namespace interop
