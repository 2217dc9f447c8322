#include <cmath>

#include "info.hpp"
#include "primitive.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

/// Includes the values of one block, counted from 0.
void include(Survey& survey, std::size_t block, const BlockExtents& extents, const Reals& values) {
  const auto extreme = [&](double value, std::int64_t point) {
    return Extreme{value,
                   values.precision(),
                   static_cast<std::int32_t>(block + 1),
                   static_cast<std::int32_t>(point % extents.i + 1),
                   static_cast<std::int32_t>(point / extents.i % extents.j + 1),
                   static_cast<std::int32_t>(point / extents.i / extents.j + 1)};
  };
  values.visit([&](auto span) {
    for (std::size_t p = 0; p < span.size(); ++p) {
      const auto value = static_cast<double>(span[p]);
      if (!std::isfinite(value)) {
        ++(std::isnan(value) ? survey.nan : survey.infinite);
        continue;
      }
      const auto point = static_cast<std::int64_t>(p);
      if (!survey.low || value < survey.low->value) survey.low = extreme(value, point);
      if (!survey.high || value > survey.high->value) survey.high = extreme(value, point);
    }
  });
}

}  // namespace

std::vector<Survey> survey(const Grid& grid) {
  std::vector<Survey> surveys(3);
  for (std::size_t c = 0; c < 3; ++c) surveys[c].label = std::string(1, "xyz"[c]);
  for (std::size_t b = 0; b < grid.blocks.size(); ++b) {
    const Block& block = grid.blocks[b];
    include(surveys[0], b, block.extents, block.x);
    include(surveys[1], b, block.extents, block.y);
    include(surveys[2], b, block.extents, block.z);
  }
  return surveys;
}

std::vector<Survey> survey(const Solution& solution) {
  std::vector<Survey> surveys;
  const auto add = [&](const std::string& label, const FlowArray& array) {
    Survey& survey = surveys.emplace_back();
    survey.label = label;
    for (std::size_t b = 0; b < solution.blocks.size(); ++b) {
      include(survey, b, solution.blocks[b].extents, solution.blocks[b].of(array));
    }
  };
  const LayoutTraits& layout = traits_of(solution.form.layout);
  for (std::int32_t v = 1; v <= solution.variables(); ++v) add(std::to_string(v), {v});
  for (std::size_t v = 0; v < surveys.size() && v < solution_names.size(); ++v) {
    if (layout.parameters > 0) surveys[v].name = solution_names[v];
  }
  const bool triplets = !solution.blocks.empty() && !solution.blocks.front().triplets.empty();
  for (std::int32_t t = 1; triplets && t <= triplet; ++t) {
    add("triplet " + std::to_string(t), {t, true});
  }
  return surveys;
}

std::vector<BlankingCounts> count_blanking(const Grid& grid) {
  std::vector<BlankingCounts> blocks;
  for (const Block& block : grid.blocks) {
    if (!grid.form.iblank) break;
    BlankingCounts& counts = blocks.emplace_back();
    for (const std::int32_t value : block.iblank) {
      ++counts[value == 0 ? 0 : value == 1 ? 1 : value < 0 ? 2 : 3];
    }
  }
  return blocks;
}

std::string digits_in(const RestartForm& form, double value) {
  const auto rounded = static_cast<float>(value);
  // Flow parameters of layout 0 are in double precision whatever that of the file is.
  const bool single = holds_singles(form.coding) && static_cast<double>(rounded) == value;
  return single ? digits(rounded) : digits(value);
}

std::string HeaderValue::text(const RestartForm& form) const {
  const std::int32_t* count = std::get_if<std::int32_t>(&value);
  return count != nullptr ? std::to_string(*count) : digits_in(form, std::get<double>(value));
}

std::vector<HeaderValue> header_values(const RestartForm& form, const RunData& run) {
  if (traits_of(form.layout).more_parameters) return {{"species", "species", run.species}};
  if (!traits_of(form.layout).holds_step()) return {};
  const bool talven = traits_of(form.layout).header == HeaderKind::talven;
  std::vector<HeaderValue> values;
  if (talven) {
    values = {{"file_version", "file version", run.fileversion},
              {"equation_set", "equation set", run.eqid},
              {"flow_variables", "flow variables named", run.talnvar},
              {"time_integration", "time integration", run.itimeint},
              {"ibeta", "ibeta", run.ibeta}};
  }
  values.push_back({"step_count", "step count", run.nstep});
  values.push_back({"step_size", "step size", run.dtau});
  if (!talven || run.eqid != equations_with_parameters) return values;
  const HeaderValue parameters[] = {{"sub_grid_scale_model", "sub-grid-scale model", run.isgsmodel},
                                    {"reynolds", "Reynolds number", run.talre},
                                    {"mach", "Mach number", run.talxm1},
                                    {"alpha", "angle of attack", run.talalfa},
                                    {"beta", "side-slip angle", run.talbeta},
                                    {"gamma", "ratio of specific heats", run.talgam},
                                    {"s1", "s1", run.tals1},
                                    {"prandtl", "Prandtl number", run.talpr},
                                    {"turbulent_prandtl", "turbulent Prandtl number", run.talprt}};
  values.insert(values.end(), std::begin(parameters), std::end(parameters));
  return values;
}

}  // namespace p3dgrid::tool
