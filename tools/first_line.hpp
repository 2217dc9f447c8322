#pragma once

#include <string>

namespace p3dgrid::tool {

/// Replaces the first line of a text file, and moves the rest of the file in place. Throws a
/// Failure that does not name the file.
void replace_first_line(const std::string& path, const std::string& line);

}  // namespace p3dgrid::tool
