#include "detect/planar.hpp"

#include <optional>

#include "detect/words.hpp"
#include "sections.hpp"

namespace p3dgrid {
namespace {

using Plan = std::vector<RecordPlan>;

constexpr std::int32_t most_points_across = 1 << 20;

/// The blocks of a header with two extents for each; none where it cannot be one.
std::optional<std::vector<std::int64_t>> planar_points(HeaderReader& header, bool multiblock) {
  std::int32_t blocks = 1;
  header.begin_record();
  if (multiblock) {
    blocks = header.integer().value_or(0);
    header.begin_record();
  }
  if (blocks < 1 || static_cast<std::uint64_t>(blocks) > header.most_blocks()) return std::nullopt;
  std::vector<std::int64_t> points;
  for (std::int32_t b = 0; b < blocks; ++b) {
    const std::int32_t i = header.integer().value_or(0);
    const std::int32_t j = header.integer().value_or(0);
    if (i < 1 || j < 1 || i > most_points_across || j > most_points_across) return std::nullopt;
    points.push_back(std::int64_t{i} * j);
  }
  return points;
}

Plan header_of(bool multiblock, std::size_t blocks, std::int64_t numbers) {
  Plan plan;
  if (multiblock) plan.push_back({.integers = 1});
  plan.push_back({.integers = numbers * static_cast<std::int64_t>(blocks)});
  return plan;
}

Plan planar_grid(bool multiblock, const std::vector<std::int64_t>& points, bool iblank) {
  Plan plan = header_of(multiblock, points.size(), 2);
  for (const std::int64_t n : points) plan.push_back({.integers = iblank ? n : 0, .reals = 2 * n});
  return plan;
}

Plan planar_solution(bool multiblock, const std::vector<std::int64_t>& points) {
  Plan plan = header_of(multiblock, points.size(), 2);
  for (const std::int64_t n : points) {
    plan.push_back({.reals = 4});
    plan.push_back({.reals = (solution_variables - 1) * n});
  }
  return plan;
}

std::string planar_form(Evidence& file, const Coding& coding, bool multiblock) {
  const auto points = planar_points(*file.header(coding), multiblock);
  if (!points) return "";
  for (const bool iblank : {false, true}) {
    if (file.fit(coding, planar_grid(multiblock, *points, iblank)).whole()) {
      return "a grid in two dimensions";
    }
  }
  const bool solution = file.fit(coding, planar_solution(multiblock, *points)).whole();
  return solution ? "a solution in two dimensions" : "";
}

/// In a binary file, the words that are the third coordinates of a block 1 x ni x nj, or the
/// blanking values of ni x nj.
Words third_words(Evidence& file, const GridForm& form, const Extents& extents) {
  constexpr std::uint64_t header = 3 * sizeof(std::int32_t);
  const auto points = static_cast<std::uint64_t>(extents.points());
  return look_at_words(file.source(), header + 2 * sizeof(float) * points, points, form.byte_order);
}

bool has_planar_twin(const GridForm& form, const Extents& extents) {
  return form.encoding == Encoding::binary && form.precision == Precision::single_precision &&
         !form.multiblock && !form.iblank && extents.i.front() == 1 && extents.points() > 0;
}

Reading planar_twin(const Reading& reading) {
  Reading twin = reading;
  auto& form = std::get<GridForm>(twin.form);
  form.multiblock = true;
  form.iblank = true;
  twin.extents = {.i = reading.extents.j, .j = reading.extents.k, .k = reading.extents.i};
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
  if (!has_planar_twin(form, reading.extents)) return {reading};
  const Words words = third_words(file, form, reading.extents);
  if (words.small && !words.zero) return {planar_twin(reading)};
  // Blanking values that are 0 everywhere would leave no point in use, but few of many are seen.
  const bool excluded = stated.multiblock == false || stated.iblank == false;
  if (!words.zero || words.all || excluded) return {reading};
  return {reading, planar_twin(reading)};
}

}  // namespace p3dgrid
