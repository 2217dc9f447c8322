#pragma once

#include <string>

#include "p3dgrid/layout.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {

/// Throws for sections that no file can have.
/// @param leading  blocks begin with a leading record, which holds five variables
void require_sections(const std::string& path, const Sections& sections, bool leading);

/// The sections of a solution read in form `read` and written in another layout.
/// @param variables  in each block
[[nodiscard]] Sections sections_to_write(const RestartForm& read, const LayoutTraits& written,
                                         std::int32_t variables);

}  // namespace p3dgrid
