#include <MOD_P3DReader.hpp>
#include <algorithm>
#include <new>

#include "restart_steps.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

void require_memory(integer allocation_status) {
  if (allocation_status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

void take_parameters(Restart& restart) {
  const auto take = [&](const auto& array) {
    for (integer b = 1; b <= restart.extents.blocks(); ++b) {
      restart.parameters.push_back(
          {static_cast<double>(array(b, 1)), static_cast<double>(array(b, 2)),
           static_cast<double>(array(b, 3)), static_cast<double>(array(b, 4))});
    }
  };
  if (mod_p3dgrid::sqvar.allocated()) return take(mod_p3dgrid::sqvar);
  take(mod_p3dgrid::dqvar);
}

void set_parameters(const Restart& restart, Layout layout) {
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  require_memory(
      mod_p3dgrid::dqvar.allocate(restart.extents.blocks(), traits_of(layout).parameters));
  std::ranges::fill(mod_p3dgrid::dqvar.span(), 0);
  for (std::size_t b = 0; b < restart.parameters.size(); ++b) {
    const FlowParameters& parameters = restart.parameters[b];
    mod_p3dgrid::dqvar(b + 1, 1) = parameters.mach;
    mod_p3dgrid::dqvar(b + 1, 2) = parameters.alpha;
    mod_p3dgrid::dqvar(b + 1, 3) = parameters.reynolds;
    mod_p3dgrid::dqvar(b + 1, 4) = parameters.time;
  }
}

}  // namespace

void take_run_data(Restart& restart, Layout layout) {
  if (traits_of(layout).holds_step())
    restart.step = TimeStep{mod_p3dgrid::nstep, mod_p3dgrid::dtau};
  if (traits_of(layout).parameters > 0) take_parameters(restart);
  if (layout == Layout::talven && talven_parameters_read()) {
    const FlowParameters parameters{mod_p3dgrid::talxm1, mod_p3dgrid::talalfa, mod_p3dgrid::talre,
                                    0.0};
    restart.parameters.assign(restart.extents.i.size(), parameters);
  }
}

void set_run_data(const Restart& restart, Layout layout) {
  if (traits_of(layout).holds_step()) {
    mod_p3dgrid::nstep = restart.step.value().count;
    mod_p3dgrid::dtau = restart.step.value().size;
  }
  if (traits_of(layout).parameters > 0) set_parameters(restart, layout);
  if (layout == Layout::function) {
    mod_p3dgrid::nfvar.deallocate();
    require_memory(mod_p3dgrid::nfvar.allocate(restart.extents.blocks()));
    std::ranges::fill(mod_p3dgrid::nfvar.span(), restart.variables());
  }
  std::copy(restart.flags.begin(), restart.flags.end(), mod_p3dgrid::iflag.data());
}

}  // namespace p3dgrid::tool
