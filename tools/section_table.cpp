#include "section_table.hpp"

#include <MOD_P3DReader.hpp>
#include <algorithm>

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;

bool first_entry_is_set_by_library(Layout layout) {
  return traits_of(layout).parameters > 0 || traits_of(layout).triplets;
}

}  // namespace

void fill_section_table(const Sections& sections, Layout layout, integer variables) {
  auto& table = mod_gridvars::rstrtvarsct;
  table.fill(0);
  mod_gridvars::nfilesect = static_cast<integer>(sections.size());
  for (std::size_t n = 0; n < sections.size(); ++n) {
    table(n + 1, 1) = sections[n].first;
    table(n + 1, 2) = sections[n].last;
  }
  // The library sizes the flow array by the sum of these counts and sets some of them itself, for
  // several layouts the first to five, whatever the first section is. With the rest in the second
  // the sum is right in every case, also after the extensions of layout 101.
  auto& counts = mod_gridvars::numrstrtvar;
  counts.fill(0);
  counts(1) = first_entry_is_set_by_library(layout) ? solution_variables : variables;
  counts(2) = std::max(0, variables - counts(1));
}

integer counted_variables(Layout layout, integer variables) {
  return first_entry_is_set_by_library(layout) ? std::max(variables, solution_variables)
                                               : variables;
}

}  // namespace p3dgrid::tool
