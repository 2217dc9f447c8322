#include "grid_plan.hpp"

namespace p3dgrid {

std::vector<RecordPlan> plan_of(const GridForm& form, const Extents& extents) {
  std::vector<RecordPlan> plan;
  if (form.multiblock) plan.push_back({.integers = 1});
  plan.push_back({.integers = std::int64_t{3} * extents.blocks()});
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    const std::int64_t points = extents.points_of(b);
    plan.push_back({.integers = form.iblank ? points : 0, .reals = 3 * points});
  }
  return plan;
}

}  // namespace p3dgrid
