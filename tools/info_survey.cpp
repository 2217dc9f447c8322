#include <array>
#include <cmath>

#include "info.hpp"
#include "primitive.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::array coordinate_names = {"x", "y", "z"};

void include(Survey& survey, const Extreme& point) {
  if (!std::isfinite(point.value)) {
    ++(std::isnan(point.value) ? survey.nan : survey.infinite);
    return;
  }
  if (!survey.low || point.value < survey.low->value) survey.low = point;
  if (!survey.high || point.value > survey.high->value) survey.high = point;
}

/// @param values  (variable, point)
std::vector<Survey> survey(const allocatable<float, 2>& values, const Extents& extents) {
  std::vector<Survey> surveys(static_cast<std::size_t>(values.extent(1)));
  for (std::size_t v = 0; v < surveys.size(); ++v) surveys[v].label = std::to_string(v + 1);
  const float* value = values.data();
  for (integer block = 1; block <= extents.blocks(); ++block) {
    const auto b = static_cast<std::size_t>(block - 1);
    for (integer k = 1; k <= extents.k[b]; ++k) {
      for (integer j = 1; j <= extents.j[b]; ++j) {
        for (integer i = 1; i <= extents.i[b]; ++i) {
          for (Survey& variable : surveys) include(variable, {*value++, block, i, j, k});
        }
      }
    }
  }
  return surveys;
}

}  // namespace

std::vector<Survey> survey(const Grid& grid) {
  std::vector<Survey> surveys = survey(grid.xyz, extents_of(grid));
  for (std::size_t c = 0; c < surveys.size(); ++c) surveys[c].label = coordinate_names.at(c);
  return surveys;
}

std::vector<Survey> survey(const Restart& restart, Layout layout) {
  std::vector<Survey> surveys = survey(restart.flow, restart.extents);
  surveys.resize(static_cast<std::size_t>(restart.variables()));
  for (std::size_t v = 0; v < surveys.size() && v < solution_names.size(); ++v) {
    if (traits_of(layout).parameters > 0) surveys[v].name = solution_names[v];
  }
  if (!restart.triplets.allocated()) return surveys;
  for (Survey& value : survey(restart.triplets, restart.extents)) {
    value.label = "triplet " + value.label;
    surveys.push_back(std::move(value));
  }
  return surveys;
}

std::vector<BlankingCounts> count_blanking(const Grid& grid) {
  std::vector<BlankingCounts> blocks;
  const integer* value = grid.iblank.data();
  for (integer b = 1; grid.iblank.allocated() && b <= grid.blocks; ++b) {
    BlankingCounts& counts = blocks.emplace_back();
    for (std::int64_t p = grid.points_of(b); p > 0; --p, ++value) {
      ++counts[*value == 0 ? 0 : *value == 1 ? 1 : *value < 0 ? 2 : 3];
    }
  }
  return blocks;
}

std::string digits_in(const RestartForm& form, double value) {
  return holds_singles(form.coding) ? digits(static_cast<float>(value)) : digits(value);
}

std::string HeaderValue::text(const RestartForm& form) const {
  const integer* count = std::get_if<integer>(&value);
  return count != nullptr ? std::to_string(*count) : digits_in(form, std::get<double>(value));
}

std::vector<HeaderValue> header_values(const RestartForm& form) {
  if (!traits_of(form.layout).holds_step()) return {};
  const bool talven = traits_of(form.layout).header == HeaderKind::talven;
  std::vector<HeaderValue> values;
  if (talven) {
    values = {{"file_version", "file version", mod_p3dgrid::fileversion},
              {"equation_set", "equation set", mod_p3dgrid::eqid},
              {"flow_variables", "flow variables named", mod_p3dgrid::talnvar},
              {"time_integration", "time integration", mod_p3dgrid::itimeint},
              {"ibeta", "ibeta", mod_p3dgrid::ibeta}};
  }
  values.push_back({"step_count", "step count", mod_p3dgrid::nstep});
  values.push_back({"step_size", "step size", mod_p3dgrid::dtau});
  if (!talven || !talven_parameters_read()) return values;
  const HeaderValue parameters[] = {
      {"sub_grid_scale_model", "sub-grid-scale model", mod_p3dgrid::isgsmodel},
      {"reynolds", "Reynolds number", mod_p3dgrid::talre},
      {"mach", "Mach number", mod_p3dgrid::talxm1},
      {"alpha", "angle of attack", mod_p3dgrid::talalfa},
      {"beta", "side-slip angle", mod_p3dgrid::talbeta},
      {"gamma", "ratio of specific heats", mod_p3dgrid::talgam},
      {"s1", "s1", mod_p3dgrid::tals1},
      {"prandtl", "Prandtl number", mod_p3dgrid::talpr},
      {"turbulent_prandtl", "turbulent Prandtl number", mod_p3dgrid::talprt}};
  values.insert(values.end(), std::begin(parameters), std::end(parameters));
  return values;
}

}  // namespace p3dgrid::tool
