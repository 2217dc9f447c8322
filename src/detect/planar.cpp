#include "detect/planar.hpp"

namespace p3dgrid {
namespace {

/// Samples what is either the third coordinates of a block 1 x ni x nj or the blanking values of a
/// two-dimensional block ni x nj.
IntegerSample third_values(Evidence& file, const GridForm& form, const Extents& extents) {
  constexpr std::int64_t header = 12;
  constexpr std::int64_t two_reals = 8;
  const std::int64_t points = extents.points();
  return file.sample_integers(header + two_reals * points, points, form.coding.byte_order);
}

bool may_be_planar(const GridForm& form, const Extents& extents) {
  return form.coding.encoding == Encoding::binary &&
         form.coding.precision == Precision::single_precision && !form.multiblock && !form.iblank &&
         extents.i.front() == 1 && extents.points() > 0;
}

Reading planar_reading(const Reading& reading) {
  Reading planar = reading;
  auto& form = std::get<GridForm>(planar.form);
  form.multiblock = true;
  form.iblank = true;
  const Extents& extents = *reading.extents;
  planar.extents = std::make_shared<const Extents>(Extents{extents.j, extents.k, extents.i});
  planar.planar = true;
  planar.unreadable = planar_not_read;
  return planar;
}

}  // namespace

std::string planar_form(Evidence& file, const Coding& coding) {
  for (const bool multiblock : {true, false}) {
    const auto outline = file.grid_outline(coding, multiblock, EmptyBlocks::refused, true);
    if (!outline) continue;
    std::vector<FilePlan> plans;
    for (const bool iblank : {false, true}) {
      plans.emplace_back(outline->sizes, outline->extents, iblank, 2);
    }
    plans.emplace_back(outline->sizes, outline->extents, traits_of(Layout::solution),
                       BodyPlan{.shape = {.sections = {{1, solution_variables - 1}}}});
    const std::vector<Fit> fits = file.fit(coding, plans);
    if (fits[0].whole() || fits[1].whole()) return "a grid in two dimensions";
    if (fits[2].whole()) return "a solution in two dimensions";
  }
  return "";
}

bool is_planar_instead(Evidence& file, const GridForm& form, const Extents& extents) {
  if (!may_be_planar(form, extents)) return false;
  const IntegerSample sample = third_values(file, form, extents);
  return sample.small && !sample.zero;
}

std::vector<Reading> with_planar_reading(Evidence& file, const Reading& reading,
                                         const StatedGridForm& stated) {
  const GridForm& form = reading.grid();
  if (!may_be_planar(form, *reading.extents)) return {reading};
  const IntegerSample sample = third_values(file, form, *reading.extents);
  if (sample.small && !sample.zero) return {planar_reading(reading)};
  // If all values are 0, they are coordinates: no grid blanks all of its points.
  const bool excluded = stated.multiblock == false || stated.iblank == false;
  if (!sample.zero || sample.all || excluded) return {reading};
  return {reading, planar_reading(reading)};
}

}  // namespace p3dgrid
