#include <algorithm>
#include <cmath>

#include "info.hpp"
#include "table.hpp"

namespace p3dgrid::tool {

std::string text_of(const std::optional<Extreme>& extreme) {
  return extreme ? digits(extreme->value, extreme->precision) : "-";
}

void Findings::include(std::size_t block, const BlockExtents& extents, const Reals& values,
                       std::int64_t first) {
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
        ++(std::isnan(value) ? nan : infinite);
        continue;
      }
      const auto point = first + static_cast<std::int64_t>(p);
      if (!low || value < low->value) low = extreme(value, point);
      if (!high || value > high->value) high = extreme(value, point);
    }
  });
}

void Findings::include(const Findings& later) {
  if (later.low && (!low || later.low->value < low->value)) low = later.low;
  if (later.high && (!high || later.high->value > high->value)) high = later.high;
  nan += later.nan;
  infinite += later.infinite;
}

void Box::include(const std::array<double, 3>& point) {
  if (!std::ranges::all_of(point, [](double value) { return std::isfinite(value); })) {
    ++not_finite;
    return;
  }
  for (std::size_t c = 0; c < 3; ++c) ranges[c].include(point[c]);
}

void Box::include(const Box& other) {
  for (std::size_t c = 0; c < 3; ++c) ranges[c].include(other.ranges[c]);
  not_finite += other.not_finite;
}

void GridFindings::include(std::size_t number, const BlockExtents& extents, const Block& points,
                           std::int64_t first) {
  coordinates[0].include(number, extents, points.x, first);
  coordinates[1].include(number, extents, points.y, first);
  coordinates[2].include(number, extents, points.z, first);
  points.x.visit([&](auto x) {
    const auto y = points.y.span<typename decltype(x)::value_type>();
    const auto z = points.z.span<typename decltype(x)::value_type>();
    for (std::size_t p = 0; p < x.size(); ++p) {
      box.include(std::array<double, 3>{x[p], y[p], z[p]});
    }
  });
  for (const std::int32_t value : points.iblank) {
    ++blanking[value == 0 ? 0 : value == 1 ? 1 : value < 0 ? 2 : 3];
  }
}

void GridFindings::include(const GridFindings& later) {
  for (std::size_t c = 0; c < 3; ++c) coordinates[c].include(later.coordinates[c]);
  box.include(later.box);
  for (std::size_t n = 0; n < blanking.size(); ++n) blanking[n] += later.blanking[n];
}

std::string Report::form() const {
  return header ? describe(found.restart()) : describe(found.grid());
}

std::vector<HeaderValue> Report::header_values() const {
  return header ? tool::header_values(header->form, header->run) : std::vector<HeaderValue>();
}

void Report::begin_surveys() {
  blocks.resize(extents.i.size());
  surveys = {{{}, "x"}, {{}, "y"}, {{}, "z"}};
}

void Report::include(std::size_t block, const GridFindings& later) {
  blocks[block].include(later);
  for (std::size_t c = 0; c < 3; ++c) (*surveys)[c].include(later.coordinates[c]);
}

void Report::begin_surveys(const std::vector<std::string>& names) {
  surveys.emplace();
  for (const std::string& name : names) {
    surveys->push_back({{}, std::to_string(surveys->size() + 1), name});
  }
  for (std::int32_t n = 1; header->triplets && n <= triplet; ++n) {
    surveys->push_back({{}, "triplet " + std::to_string(n)});
  }
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
  values.insert(values.end(), {{"sub_grid_scale_model", "sub-grid-scale model", run.isgsmodel},
                               {"reynolds", "Reynolds number", run.talre},
                               {"mach", "Mach number", run.talxm1},
                               {"alpha", "angle of attack", run.talalfa},
                               {"beta", "side-slip angle", run.talbeta},
                               {"gamma", "ratio of specific heats", run.talgam},
                               {"s1", "s1", run.tals1},
                               {"prandtl", "Prandtl number", run.talpr},
                               {"turbulent_prandtl", "turbulent Prandtl number", run.talprt}});
  return values;
}

}  // namespace p3dgrid::tool
