#pragma once

#include <string>

#include "restart_file.hpp"

/// Copies between a `Restart` and the library's module variables.
namespace p3dgrid::tool {

/// Takes step and flow parameters from the last read.
void take_run_data(Restart& restart, Layout layout);

/// Sets the header values for the next write.
void set_run_data(const Restart& restart, Layout layout);

/// Takes the flags of layout 101 that have just been read. The variables they announce become one
/// more section; those that the chain leaves out are listed as missing and set to 0.
void take_extensions(const std::string& path, Restart& restart);

/// Sets the variables `first` to `last` to 0 at all points.
void clear_variables(Restart& restart, integer first, integer last);

/// The sections in the blocks of a file written. The extensions of layout 101 follow the blocks.
[[nodiscard]] Sections sections_in_blocks(const Restart& restart, Layout layout);

/// Sets the section table by which restart bodies are read and written. The operations change it,
/// so it is set before each of them.
/// @param variables  variables of the flow array, those of extensions included
void set_section_table(const Sections& sections, Layout layout, integer variables);

/// Number of variables that the library then assumes: at least five in some layouts.
[[nodiscard]] integer counted_variables(Layout layout, integer variables);

}  // namespace p3dgrid::tool
