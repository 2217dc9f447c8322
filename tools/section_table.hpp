#pragma once

#include <mod_p3dgrid/logical.hpp>

#include "form_options.hpp"

namespace p3dgrid::tool {

/// Fills the section table that the library reads and writes restart bodies by. The operations
/// change it, so it is filled anew before each of them.
/// @param variables  variables of the flow array, those of extensions included
void fill_section_table(const Sections& sections, Layout layout, mod_p3dgrid::integer variables);

/// Variables that the library counts after that: some layouts have five, whatever they hold.
[[nodiscard]] mod_p3dgrid::integer counted_variables(Layout layout, mod_p3dgrid::integer variables);

}  // namespace p3dgrid::tool
