#include "header_values.hpp"

#include "restart_header.hpp"
#include "table.hpp"

namespace p3dgrid::tool {

using mod_p3dgrid::integer;

std::string digits_in(const RestartForm& form, double value) {
  const bool rounded = form.coding.encoding != Encoding::formatted &&
                       form.coding.precision == Precision::single_precision;
  return rounded ? digits(static_cast<float>(value)) : digits(value);
}

std::string HeaderValue::text(const RestartForm& form) const {
  const integer* count = std::get_if<integer>(&value);
  return count != nullptr ? std::to_string(*count) : digits_in(form, std::get<double>(value));
}

std::vector<HeaderValue> header_values(const RestartForm& form) {
  if (!traits_of(form.layout).holds_step()) return {};
  const bool talven = form.layout == Layout::talven;
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
