#pragma once

#include <MOD_P3DReader.hpp>
#include <string>
#include <string_view>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// The name by which the library is told of a file. Paths that fit are their own names; for the
/// others a short name is made up, which the library turns back into the path. The name stays
/// good until the process ends.
[[nodiscard]] mod_p3dgrid::FileName name_for(const std::string& path);

/// The same, of a file whose numbers have that byte order from now on; without it, it is the
/// machine's. Text has none.
[[nodiscard]] mod_p3dgrid::FileName name_for(const std::string& path, ByteOrder order);

/// A short prefix for names that the library makes up: whatever it puts behind the prefix, the path
/// is `path_stem` with the same behind it. No path given before or later begins with the prefix.
[[nodiscard]] mod_p3dgrid::FileName prefix_for(const std::string& path_stem);

/// The path behind a name; a name that is not from here is its own path.
[[nodiscard]] std::string path_behind(std::string_view name);

}  // namespace p3dgrid::tool
