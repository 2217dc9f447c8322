#include "restart_plan.hpp"

#include "restart_header.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

constexpr std::int64_t parameters_per_block = 4;
constexpr std::int64_t triplet = 3;

void plan_header(std::vector<RecordPlan>& plan, const RestartForm& form,
                 const RestartShape& shape) {
  const auto blocks = static_cast<std::int64_t>(shape.extents.blocks());
  switch (form.layout) {
    case Layout::talven:
      plan.push_back({.integers = 2});
      plan.push_back({.integers = 5, .reals = 1});
      if (shape.flow_parameters) plan.push_back({.integers = 1, .doubles = 8});
      break;
    case Layout::time_step:
    case Layout::triplets:
      plan.push_back({.integers = 2, .reals = 1});
      break;
    case Layout::single_block:
      plan.push_back({.integers = 4, .reals = 1});
      break;
    case Layout::solution:
    case Layout::function:
      if (form.multiblock) plan.push_back({.integers = 1});
      plan.push_back({.integers = (form.layout == Layout::function ? 4 : 3) * blocks});
      return;
    case Layout::bare:
      return;
  }
  if (!holds_extents(form.layout)) return;
  plan.insert(plan.end(), static_cast<std::size_t>(blocks), {.integers = 3});
}

void plan_block(std::vector<RecordPlan>& plan, const RestartForm& form, const RestartShape& shape,
                std::size_t block) {
  const std::int64_t points = shape.extents.points_of(block);
  if (holds_parameters(form.layout)) plan.push_back({.reals = parameters_per_block});
  if (shape.triplets) plan.push_back({.reals = (triplet + solution_variables) * points});
  if (!shape.functions.empty()) {
    plan.push_back({.reals = shape.functions[block] * points});
    return;
  }
  for (std::size_t n = shape.triplets ? 1 : 0; n < shape.sections.size(); ++n) {
    plan.push_back({.reals = shape.sections[n].variables() * points});
  }
  for (int level = 0; level < shape.older_levels; ++level) {
    plan.push_back({.reals = shape.sections.front().variables() * points});
  }
}

/// Variables that a flag announces, by its position in the chain from 0.
std::int64_t variables_announced(integer flag, std::size_t position) {
  if (flag == 1) return 5;
  return flag == 41 && position <= 1 ? 3 : 0;
}

void plan_extensions(std::vector<RecordPlan>& plan, const RestartShape& shape) {
  for (std::size_t m = 0; m < shape.flags.size(); ++m) {
    plan.push_back({.integers = 1});
    if (shape.flags[m] == end_of_extensions) return;
    const std::int64_t variables = variables_announced(shape.flags[m], m);
    if (variables == 0) continue;
    for (std::size_t b = 0; b < shape.extents.i.size(); ++b) {
      plan.push_back({.reals = variables * shape.extents.points_of(b)});
    }
  }
}

}  // namespace

int older_levels(Encoding encoding, integer time_integration) {
  if (encoding == Encoding::formatted) return 0;
  return time_integration == 3 ? 2 : time_integration >= 2 ? 1 : 0;
}

RestartShape shape_of(const RestartForm& form, const Sections& sections, const Extents& extents) {
  RestartShape shape{.extents = extents, .sections = sections, .triplets = reads_triplets(form)};
  if (form.layout == Layout::talven) {
    shape.flow_parameters = talven_parameters_read();
    shape.older_levels = older_levels(form.encoding, mod_p3dgrid::itimeint);
  }
  return shape;
}

std::vector<RecordPlan> plan_of(const RestartForm& form, const RestartShape& shape) {
  std::vector<RecordPlan> plan;
  plan_header(plan, form, shape);
  for (std::size_t b = 0; b < shape.extents.i.size(); ++b) {
    plan_block(plan, form, shape, b);
  }
  if (form.layout == Layout::single_block) plan_extensions(plan, shape);
  return plan;
}

}  // namespace p3dgrid
