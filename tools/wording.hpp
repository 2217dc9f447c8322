#pragma once

#include <cstdint>
#include <p3dgrid/detect.hpp>
#include <string>
#include <vector>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// Every option that says something of the file when it is taken so.
[[nodiscard]] std::vector<FormOption> options_of(const Reading& reading);

/// The readings as a list for people, each on a line of its own behind a line end, with the options
/// in which it differs from the others:
/// "  layout 102, ... (--restart-precision single)".
[[nodiscard]] std::string named(const std::vector<Reading>& readings);

/// "a grid in two dimensions, ..., which cannot be read; ...": a reading and why it is of no use.
[[nodiscard]] std::string unreadable_form(const Reading& reading);

/// Where the file departs from the reading that agrees furthest, and from others as near, as part
/// of a sentence.
[[nodiscard]] std::string departure(const std::vector<Reading>& nearest);

/// What shows that a reading is right, as part of a sentence.
[[nodiscard]] std::string reason(const Reading& reading, std::int64_t file_size);

}  // namespace p3dgrid::tool
