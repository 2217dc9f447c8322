#include "restart_module.hpp"

#include <algorithm>

#include "failure.hpp"
#include "library.hpp"
#include "restart_file.hpp"

namespace p3dgrid::tool {
namespace {

void take_parameters(Restart& restart) {
  const auto take = [&](const auto& array) {
    const auto at = [&](integer b, std::int64_t n) { return static_cast<double>(array(b, n)); };
    for (integer b = 1; b <= restart.extents.blocks(); ++b) {
      restart.parameters.push_back({at(b, 1), at(b, 2), at(b, 3), at(b, 4)});
      auto& others = restart.parameters.back().others;
      for (std::int64_t n = 5; n <= array.extent(2); ++n) others.push_back(at(b, n));
    }
  };
  if (mod_p3dgrid::sqvar.allocated()) return take(mod_p3dgrid::sqvar);
  take(mod_p3dgrid::dqvar);
}

void set_parameters(const Restart& restart, std::int32_t count) {
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  require_memory(mod_p3dgrid::dqvar.allocate(restart.extents.blocks(), count));
  for (std::size_t b = 0; b < restart.parameters.size(); ++b) {
    const auto& [mach, alpha, reynolds, time, others] = restart.parameters[b];
    std::vector<double> row = {mach, alpha, reynolds, time};
    row.insert(row.end(), others.begin(), others.end());
    row.resize(static_cast<std::size_t>(count));
    for (std::size_t n = 0; n < row.size(); ++n) mod_p3dgrid::dqvar(b + 1, n + 1) = row[n];
  }
}

/// The variables that the extensions of layout 101 hold.
std::vector<Section> extensions_in(const std::array<integer, most_flags>& flags) {
  std::vector<Section> extensions;
  for (std::size_t m = 0; m < flags.size() && flags[m] != end_of_extensions; ++m) {
    const Extension* const extension = extension_of(flags[m], static_cast<integer>(m + 1));
    if (extension != nullptr) extensions.push_back(extension->variables);
  }
  return extensions;
}

bool first_count_is_set_by_library(Layout layout) {
  return traits_of(layout).parameters > 0 || traits_of(layout).triplets;
}

}  // namespace

void take_run_data(Restart& restart, Layout layout) {
  if (traits_of(layout).holds_step()) {
    restart.step = TimeStep{mod_p3dgrid::nstep, mod_p3dgrid::dtau};
  }
  if (traits_of(layout).parameters > 0) take_parameters(restart);
  if (traits_of(layout).header == HeaderKind::talven && talven_parameters_read()) {
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
  if (traits_of(layout).parameters > 0) set_parameters(restart, traits_of(layout).parameters);
  if (traits_of(layout).counted_variables) {
    mod_p3dgrid::nfvar.deallocate();
    require_memory(mod_p3dgrid::nfvar.allocate(restart.extents.blocks()));
    std::ranges::fill(mod_p3dgrid::nfvar.span(), restart.variables());
  }
  std::ranges::copy(restart.flags, mod_p3dgrid::iflag.data());
}

void take_extensions(const std::string& path, Restart& restart) {
  std::copy_n(mod_p3dgrid::iflag.data(), restart.flags.size(), restart.flags.begin());
  integer held = restart.variables();
  for (const Section& extension : extensions_in(restart.flags)) {
    if (restart.sections.size() > 1) {
      throw Unreadable(path + ": holds variable extensions besides the sections " +
                       describe(restart.sections) +
                       "; --sections 1-5 reads it, if those are not there");
    }
    if (extension.first > held + 1) restart.missing.push_back({held + 1, extension.first - 1});
    held = std::max(held, extension.last);
  }
  for (const Section& gap : restart.missing) clear_variables(restart, gap.first, gap.last);
  if (held > restart.variables()) restart.sections.push_back({solution_variables + 1, held});
}

void clear_variables(Restart& restart, integer first, integer last) {
  for (std::int64_t p = 1; p <= restart.flow.extent(2); ++p) {
    for (integer v = first; v <= last; ++v) restart.flow(v, p) = 0;
  }
}

Sections sections_in_blocks(const Restart& restart, Layout layout) {
  const bool extended = traits_of(layout).extensions && !extensions_in(restart.flags).empty();
  return extended ? Sections{restart.sections.front()} : restart.sections;
}

void set_section_table(const Sections& sections, Layout layout, integer variables) {
  auto& table = mod_gridvars::rstrtvarsct;
  table.fill(0);
  mod_gridvars::nfilesect = static_cast<integer>(sections.size());
  for (std::size_t n = 0; n < sections.size(); ++n) {
    table(n + 1, 1) = sections[n].first;
    table(n + 1, 2) = sections[n].last;
  }
  // The library sizes the flow array by the sum of these counts, and in some layouts sets the first
  // one to five. The rest is in the second, so that the sum is right in every layout.
  auto& counts = mod_gridvars::numrstrtvar;
  counts.fill(0);
  counts(1) = first_count_is_set_by_library(layout) ? solution_variables : variables;
  counts(2) = std::max(0, variables - counts(1));
}

integer counted_variables(Layout layout, integer variables) {
  return first_count_is_set_by_library(layout) ? std::max(variables, solution_variables)
                                               : variables;
}

}  // namespace p3dgrid::tool
