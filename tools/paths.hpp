#pragma once

#include <MOD_P3DReader.hpp>
#include <string>
#include <string_view>

namespace p3dgrid {

/// The name by which the library is told of a file. Paths that fit are their own names; for the
/// others a short name is made up, which the library turns back into the path. The name stays
/// good until the process ends.
[[nodiscard]] mod_p3dgrid::FileName name_for(const std::string& path);

/// The path behind a name; a name that `name_for` has not given is its own path.
[[nodiscard]] std::string path_behind(std::string_view name);

}  // namespace p3dgrid
