#include "model/solution.hpp"

#include <algorithm>
#include <ostream>

#include "MOD_P3DReader.hpp"
#include "restart/restart_case.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;

/// Sections of one to three variables each, here and there one of none. Layouts that fix the
/// number of variables of the first section begin with five.
std::vector<std::pair<integer, integer>> any_sections(const Form& form) {
  std::vector<std::pair<integer, integer>> sections;
  const bool five_first = form.layout == 2 || form.triplets();
  integer last = five_first ? 5 : 0;
  if (five_first) sections.emplace_back(1, 5);
  const auto more = *rc::gen::container<std::vector<integer>>(rc::gen::inRange(0, 4));
  for (const integer variables : more) {
    if (sections.size() == 5 || last + variables > 12) break;
    sections.emplace_back(last + 1, last + variables);
    last += variables;
  }
  if (sections.empty()) sections.emplace_back(1, 1);
  return sections;
}

std::vector<integer> any_flags() {
  const std::vector<std::vector<integer>> chains{{999, 0, 0},  {1, 999, 0},  {41, 999, 0},
                                                 {7, 999, 1},  {1, 41, 999}, {41, 41, 999},
                                                 {41, 1, 999}, {1, 1, 999},  {7, 41, 999}};
  return *rc::gen::elementOf(chains);
}

/// Variables that the extensions announce, and how many there are in all when the last was read.
struct Extended {
  std::vector<integer> variables;
  integer count = 5;
};

Extended extended(const std::vector<integer>& flags) {
  Extended all;
  const auto add = [&](integer first, integer last) {
    for (integer v = first; v <= last; ++v) all.variables.push_back(v);
    all.count = last;
  };
  for (std::size_t m = 0; m < flags.size() && flags[m] != 999; ++m) {
    if (flags[m] == 1) add(6, 10);
    if (flags[m] == 41 && m == 0) add(6, 8);
    if (flags[m] == 41 && m == 1) add(11, 13);
  }
  return all;
}

Form any_form() {
  Form form;
  form.layout = *rc::gen::element(1, 2, 3, 100, 101, 102);
  form.iformat = *rc::gen::inRange(0, 3);
  form.dblprec = *rc::gen::arbitrary<bool>();
  return form;
}

Solution make_solution() {
  Solution made;
  made.form = any_form();
  made.extents = *block_extents();
  if (made.form.layout == 101 || made.form.layout == 102) made.extents.resize(1);
  made.form.multiblock = made.extents.size() > 1 || *rc::gen::arbitrary<bool>();
  made.sections = any_sections(made.form);
  if (made.form.layout == 101) made.flags = any_flags();
  if (extended(made.flags).count > 5) made.sections.resize(1);
  made.rows = made.sections.back().second;
  if (made.form.layout == 101) made.rows = std::max(made.rows, extended(made.flags).count);
  const std::int64_t points = Blocks(made.extents).total;
  made.flow = *any_reals(points * made.rows);
  made.triplets = *any_reals(points * 3);
  made.parameter_rows = *rc::gen::inRange(1, static_cast<integer>(made.extents.size()) + 1);
  made.parameters = *any_reals(std::int64_t{4} * made.parameter_rows);
  made.steps = *rc::gen::arbitrary<integer>();
  made.step_size = *rc::gen::arbitrary<double>();
  return made;
}

}  // namespace

void showValue(const Form& form, std::ostream& out) {
  out << "layout " << form.layout << " iformat " << form.iformat << " dblprec " << form.dblprec
      << " multiblock " << form.multiblock;
}

void showValue(const Solution& solution, std::ostream& out) {
  showValue(solution.form, out);
  out << "\nextents " << rc::toString(solution.extents) << "\nsections "
      << rc::toString(solution.sections) << "\nflags " << rc::toString(solution.flags) << "\nflow ("
      << solution.rows << " rows) " << rc::toString(solution.flow) << "\ntriplets "
      << rc::toString(solution.triplets) << "\nparameters (" << solution.parameter_rows << " rows) "
      << rc::toString(solution.parameters) << "\nsteps " << solution.steps << " step size "
      << solution.step_size;
}

rc::Gen<Solution> any_solution() {
  return rc::gen::exec(make_solution);
}

std::vector<integer> Solution::variables() const {
  std::vector<integer> all;
  for (const auto& [first, last] : sections) {
    for (integer v = first; v <= last; ++v) all.push_back(v);
  }
  const auto more = extended(flags).variables;
  all.insert(all.end(), more.begin(), more.end());
  std::ranges::sort(all);
  all.erase(std::unique(all.begin(), all.end()), all.end());
  return all;
}

void set_host_for_reading(const Solution& solution) {
  test_support::set_sections({solution.sections.begin(), solution.sections.end()});
  if (solution.form.layout == 101 && extended(solution.flags).count > 5) {
    mod_gridvars::numrstrtvar(2) = extended(solution.flags).count - 5;
  }
  iflag.fill(-1);
  nstep = 0;
  dtau = 0;
  nfvar.deallocate();
  sqvar.deallocate();
  dqvar.deallocate();
}

void set_host(const Solution& solution) {
  set_host_for_reading(solution);
  for (integer m = 1; m <= 3; ++m) iflag(m) = solution.flags[static_cast<std::size_t>(m) - 1];
  nstep = solution.steps;
  dtau = solution.step_size;
  const auto blocks = static_cast<integer>(solution.extents.size());
  if (solution.form.layout == 3) {
    RC_ASSERT(nfvar.allocate(blocks) == allocation_done);
    // Sections are all that a function file holds; the count of the first is its header's.
    std::ranges::fill(nfvar.span(), solution.rows);
    mod_gridvars::numrstrtvar.fill(0);
    mod_gridvars::numrstrtvar(1) = solution.rows;
  }
  if (solution.form.layout != 2) return;
  RC_ASSERT(sqvar.allocate(solution.parameter_rows, 4) == allocation_done);
  std::ranges::copy(solution.parameters, sqvar.data());
}

void write_whole(const Solution& solution, const char* name) {
  const Blocks blocks(solution.extents);
  writep3drestart(
      name, solution.form.iformat, solution.form.dblprec, solution.parameter_rows, blocks.count(),
      array_view<const float, 2>(solution.flow.data(), solution.rows, blocks.total),
      array_view<const float, 2>(solution.triplets.data(), 3, blocks.total), blocks.idim,
      blocks.jdim, blocks.kdim, solution.form.layout, solution.form.multiblock);
  p3dcloseunit(301);
}

}  // namespace model
