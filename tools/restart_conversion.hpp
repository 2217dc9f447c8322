#pragma once

#include <optional>
#include <string>
#include <vector>

#include "restart_file.hpp"

namespace p3dgrid::tool {

/// Header values stated by the user.
struct HeaderValues {
  std::optional<double> mach;
  std::optional<double> alpha;
  std::optional<double> reynolds;
  std::optional<double> time;
  std::optional<integer> step;
  std::optional<double> step_size;
};

/// Why the solution cannot be written in that form, as part of a sentence; empty if it can.
[[nodiscard]] std::string obstacle(const Restart& restart, const RestartForm& read,
                                   const RestartForm& written);

/// Why a variable with these values cannot be written in that form, as part of a sentence; empty if
/// it can.
/// @param values  (variable, point)
/// @param row     of the variable in `values`, counted from 1
[[nodiscard]] std::string obstacle(integer variable, const RestartForm& written,
                                   mod_p3dgrid::array_view<const float, 2> values,
                                   std::int64_t row);

/// Why the layout cannot hold the stated values, as part of a sentence; empty if it can.
[[nodiscard]] std::string obstacle(const HeaderValues& values, Layout layout);

/// Prepares a solution for another form: sets the stated header values, 0 for unknown ones, and
/// sections that the layout can hold. Returns notes for the user.
[[nodiscard]] std::vector<std::string> adapt(Restart& restart, const RestartForm& read,
                                             const RestartForm& written,
                                             const HeaderValues& values);

}  // namespace p3dgrid::tool
