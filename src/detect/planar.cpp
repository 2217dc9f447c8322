#include "detect/planar.hpp"

#include "detect/words.hpp"

namespace p3dgrid {
namespace {

constexpr std::int32_t variables = solution_variables - 1;

std::string planar_form(Evidence& file, const Coding& coding, bool multiblock) {
  const auto outline = file.grid_outline(coding, multiblock, EmptyBlocks::refused, true);
  if (!outline) return "";
  std::vector<FilePlan> plans;
  for (const bool iblank : {false, true}) {
    plans.emplace_back(outline->sizes, outline->extents, iblank, 2);
  }
  plans.emplace_back(outline->sizes, outline->extents, traits_of(Layout::solution),
                     BodyPlan{.shape = {.sections = {{1, variables}}}});
  const std::vector<Fit> fits = file.fit(coding, plans);
  if (fits[0].whole() || fits[1].whole()) return "a grid in two dimensions";
  return fits[2].whole() ? "a solution in two dimensions" : "";
}

/// In a binary file, the words that are the third coordinates of a block 1 x ni x nj, or the
/// blanking values of ni x nj.
Words third_words(Evidence& file, const GridForm& form, const Extents& extents) {
  constexpr std::int64_t header = 12;
  constexpr std::int64_t two_reals = 8;
  const std::int64_t points = extents.points();
  return look_at_words(file, header + two_reals * points, points, form.coding.byte_order);
}

bool has_planar_twin(const GridForm& form, const Extents& extents) {
  return form.coding.encoding == Encoding::binary &&
         form.coding.precision == Precision::single_precision && !form.multiblock && !form.iblank &&
         extents.i.front() == 1 && extents.points() > 0;
}

Reading planar_twin(const Reading& reading) {
  Reading twin = reading;
  auto& form = std::get<GridForm>(twin.form);
  form.multiblock = true;
  form.iblank = true;
  const Extents& extents = *reading.extents;
  twin.extents = std::make_shared<const Extents>(Extents{extents.j, extents.k, extents.i});
  twin.planar = true;
  twin.unreadable = planar_not_read;
  return twin;
}

}  // namespace

std::string planar_form(Evidence& file, const Coding& coding) {
  const std::string form = planar_form(file, coding, true);
  return form.empty() ? planar_form(file, coding, false) : form;
}

bool is_planar_twin(Evidence& file, const GridForm& form, const Extents& extents) {
  if (!has_planar_twin(form, extents)) return false;
  const Words words = third_words(file, form, extents);
  return words.small && !words.zero;
}

std::vector<Reading> with_planar_twin(Evidence& file, const Reading& reading,
                                      const StatedGridForm& stated) {
  const GridForm& form = reading.grid();
  if (!has_planar_twin(form, *reading.extents)) return {reading};
  const Words words = third_words(file, form, *reading.extents);
  if (words.small && !words.zero) return {planar_twin(reading)};
  // If all words are 0 and have been checked, they are coordinates: a grid has points in use.
  const bool excluded = stated.multiblock == false || stated.iblank == false;
  if (!words.zero || words.all || excluded) return {reading};
  return {reading, planar_twin(reading)};
}

}  // namespace p3dgrid
