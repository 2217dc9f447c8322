#pragma once

#include <optional>
#include <string>
#include <vector>

#include "restart_file.hpp"

namespace p3dgrid::tool {

/// Header values that the user states, in place of those read.
struct HeaderValues {
  std::optional<double> mach;
  std::optional<double> alpha;
  std::optional<double> reynolds;
  std::optional<double> time;
  std::optional<mod_p3dgrid::integer> step;
  std::optional<double> step_size;
};

/// Why a solution of these blocks and variables cannot be written in that form, as part of a
/// sentence; empty when it can.
[[nodiscard]] std::string obstacle(const Restart& restart, const RestartForm& read,
                                   const RestartForm& written);

/// Why the stated values have no place in that layout, as part of a sentence; empty when they have.
[[nodiscard]] std::string obstacle(const HeaderValues& values, Layout layout);

/// Makes a solution that was read in one form ready to be written in another: puts in the stated
/// header values, 0 for what the source does not have, and sections that the layout can hold.
/// Returns what the user should know of that, a sentence each.
[[nodiscard]] std::vector<std::string> adapt(Restart& restart, const RestartForm& read,
                                             const RestartForm& written,
                                             const HeaderValues& values);

}  // namespace p3dgrid::tool
