#pragma once

#include <string>

#include "p3dgrid/layout.hpp"
#include "p3dgrid/solution.hpp"

namespace p3dgrid {

/// Throws for sections that no file can have.
/// @param leading  blocks begin with a leading record, which holds five variables
void require_sections(const std::string& path, const Sections& sections, bool leading);

/// Throws for a coding of which the layout has no files.
void require_files_of(const std::string& path, const RestartForm& form);

/// The variables that a record of a block holds.
/// @param section  of the record; an only section is as long as the header counts for the block
[[nodiscard]] Section variables_of(const SolutionHeader& header, std::size_t block,
                                   const Section& section);

/// The variables that a chain of flags announces, in file order.
[[nodiscard]] Sections extensions_in(const std::vector<std::int32_t>& flags);

}  // namespace p3dgrid
