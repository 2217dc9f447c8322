#pragma once

#include <string_view>

#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"

namespace mod_p3dgrid {

/// Name of the temporary file of a variable: the prefix, the variable as six digits (asterisks if
/// it has more) and ".tmp". Cut at the 40 characters of a file name.
[[nodiscard]] FileName variable_file_name(std::string_view prefix, integer variable);

/// The first name that no file has, out of `name` and `name` with one "t" after the other behind
/// it. A name that cannot grow any further is a fatal error.
[[nodiscard]] FileName first_free_name(FileName name);

}  // namespace mod_p3dgrid
