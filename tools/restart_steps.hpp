#pragma once

#include <functional>
#include <optional>
#include <string>

#include "form_options.hpp"
#include "restart_file.hpp"

/// The steps that a restart file is read and written in, for those who do not want it whole.
namespace p3dgrid::tool {

/// Runs `read`. What it finds unreadable becomes a Failure with the option that would help, where
/// there is one.
void with_advice(const std::string& path, const RestartForm& form,
                 const std::optional<Extents>& grid, const std::function<void()>& read);

/// Extents and sections of a solution, from its header; nothing of its body.
[[nodiscard]] Restart outline_of(const std::string& path, const RestartForm& form,
                                 const std::optional<Extents>& extents);

/// The extents for a layout whose reader has none: those that have been found, or the grid's.
[[nodiscard]] std::optional<Extents> extents_to_read_by(const Found& found,
                                                        const std::optional<Extents>& grid);

/// True when the form has been compared with the file to its last byte.
[[nodiscard]] bool is_proven(const Found& found);

/// Takes from the library's variables what the last read has put there of the run: step, flow
/// parameters.
void take_run_data(Restart& restart, Layout layout);

/// Sets the variables `first` to `last` to 0 at all points.
void clear_variables(Restart& restart, mod_p3dgrid::integer first, mod_p3dgrid::integer last);

/// Takes the flags of layout 101 that have just been read. The variables they announce are one more
/// section from here on; those that the chain leaves out are listed as missing, and 0 in memory.
void take_extensions(const std::string& path, Restart& restart);

/// Throws a Failure when the lengths in the file are not those of its form, its sections and the
/// extents by which it is read.
void require_plan(const std::string& path, RestartForm form, const Sections& sections,
                  const Extents& extents, const std::optional<Extents>& grid);

/// Puts into the library's variables what the header takes from them.
void set_run_data(const Restart& restart, Layout layout);

/// The sections that stand in the blocks of a file written. Of layout 101 the extensions stand
/// behind the blocks, not in a section.
[[nodiscard]] Sections sections_in_blocks(const Restart& restart, Layout layout);

}  // namespace p3dgrid::tool
