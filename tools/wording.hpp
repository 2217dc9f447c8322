#pragma once

#include <p3dgrid/detect.hpp>
#include <string>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// Every option that applies to the file in this reading.
[[nodiscard]] std::vector<FormOption> options_of(const Reading& reading);

/// A list of the readings, each on a new line, with the options in which it differs from the
/// others: "  layout 102, ... (--restart-precision single)".
[[nodiscard]] std::string named(const std::vector<Reading>& readings);

/// The first difference between the file and the readings that agree furthest, as part of a
/// sentence.
[[nodiscard]] std::string departure(const std::vector<Reading>& nearest);

}  // namespace p3dgrid::tool
