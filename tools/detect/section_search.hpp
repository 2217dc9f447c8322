#pragma once

#include <MOD_P3DReader.hpp>
#include <vector>

#include "detect/evidence.hpp"
#include "restart_form.hpp"
#include "restart_plan.hpp"
#include "sections.hpp"

namespace p3dgrid {

/// The section tables by which a body may have been written: those stated; or of an unformatted
/// file, each that agrees with the lengths of the records in its first block; or else, where
/// records leave no trace, the one section whose variables fill the file. Never none: where nothing
/// goes with the file, it is the table that is usual.
/// @param shape      without its sections
/// @param functions  of each block, for layout 3
[[nodiscard]] std::vector<Sections> possible_sections(
    Evidence& file, const Coding& coding, const RestartForm& form, const RestartShape& shape,
    const std::vector<mod_p3dgrid::integer>& functions);

}  // namespace p3dgrid
