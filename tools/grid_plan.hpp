#pragma once

#include <vector>

#include "extents.hpp"
#include "grid_form.hpp"
#include "record_plan.hpp"

namespace p3dgrid {

/// The records of a grid file in order.
[[nodiscard]] std::vector<RecordPlan> plan_of(const GridForm& form, const Extents& extents);

}  // namespace p3dgrid
