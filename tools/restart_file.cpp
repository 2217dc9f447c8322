#include "restart_file.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "console.hpp"
#include "failure.hpp"
#include "paths.hpp"
#include "progress.hpp"
#include "restart_guess.hpp"
#include "restart_plan.hpp"
#include "restart_steps.hpp"
#include "section_table.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

constexpr integer write_unit = 301;
constexpr int triplet = 3;
constexpr int parameters_per_block = 4;

void require_memory(integer allocation_status) {
  if (allocation_status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  throw Unreadable(path + ": " + what);
}

logical precision_flag(const RestartForm& form) {
  return form.precision == Precision::double_precision;
}

/// The functions of a file that has as many in every block; others cannot be read whole, because
/// all blocks are read by one list of sections.
integer functions_of(const std::string& path, const RestartHeader& header) {
  const auto [fewest, most] = std::minmax_element(header.functions.begin(), header.functions.end());
  if (*fewest != *most) {
    refuse(path, "its blocks hold " + std::to_string(*fewest) + " to " + std::to_string(*most) +
                     " functions; only files with the same number in every block can be read");
  }
  if (*most < 1 || *most > most_variables) {
    refuse(path, "has a function count of " + std::to_string(*most));
  }
  return *most;
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

}  // namespace

void take_run_data(Restart& restart, Layout layout) {
  if (holds_step(layout)) restart.step = TimeStep{mod_p3dgrid::nstep, mod_p3dgrid::dtau};
  if (holds_parameters(layout)) take_parameters(restart);
  if (layout == Layout::talven && talven_parameters_read()) {
    const FlowParameters parameters{mod_p3dgrid::talxm1, mod_p3dgrid::talalfa, mod_p3dgrid::talre,
                                    0.0};
    restart.parameters.assign(restart.extents.i.size(), parameters);
  }
}

namespace {

/// Calls `take` for the variables that the extensions of layout 101 bring.
template <class Take>
void for_each_extension(const std::array<integer, 3>& flags, Take take) {
  for (std::size_t m = 0; m < flags.size() && flags[m] != end_of_extensions; ++m) {
    if (flags[m] == 1) take(Section{6, 10});
    if (flags[m] == 41 && m == 0) take(Section{6, 8});
    if (flags[m] == 41 && m == 1) take(Section{11, 13});
  }
}

void clear_variables(Restart& restart, integer first, integer last) {
  for (std::int64_t p = 1; p <= restart.flow.extent(2); ++p) {
    for (integer v = first; v <= last; ++v) restart.flow(v, p) = 0;
  }
}

}  // namespace

// Variables that the chain of flags leaves out have no value in the file, and none in memory
// either.
void take_extensions(const std::string& path, Restart& restart) {
  std::copy_n(mod_p3dgrid::iflag.data(), restart.flags.size(), restart.flags.begin());
  integer held = restart.variables();
  for_each_extension(restart.flags, [&](const Section& extension) {
    if (restart.sections.size() > 1) {
      refuse(path, "holds variable extensions besides the sections " + describe(restart.sections) +
                       "; --sections 1-5 reads it, if those are not there");
    }
    if (extension.first > held + 1) restart.missing.push_back({held + 1, extension.first - 1});
    held = std::max(held, extension.last);
  });
  for (const Section& gap : restart.missing) clear_variables(restart, gap.first, gap.last);
  if (held > restart.variables()) restart.sections.push_back({solution_variables + 1, held});
}

void require_plan(const std::string& path, const RestartForm& form, const RestartShape& shape,
                  const std::optional<Extents>& grid) {
  const Misfit misfit = misfit_of(path, form, plan_of(form, shape));
  if (misfit.fits()) return;
  if (misfit.longer) {
    print_note(path +
               ": goes on behind the last block, with records that are left out; "
               "--sections may be longer than " +
               describe(shape.sections));
    return;
  }
  std::string message = path + ": is not " + describe(form) + " with the sections " +
                        describe(shape.sections) + ": " + misfit.what;
  if (form.layout == Layout::triplets && !shape.triplets) {
    RestartShape with_triplets = shape;
    with_triplets.triplets = true;
    if (misfit_of(path, form, plan_of(form, with_triplets)).fits()) {
      throw Failure(ExitStatus::mismatch,
                    path +
                        ": begins its blocks with triplets, and single-precision files of "
                        "layout 100 are read without; write it in double precision or as text");
    }
  }
  const std::string advice = restart_advice(path, form, grid);
  throw Failure(ExitStatus::mismatch, advice.empty() ? message : message + "; " + advice);
}

namespace {

/// The extents by which the body is read: the header's own, or the grid's.
Extents extents_for(const std::string& path, const RestartForm& form, const RestartHeader& header,
                    const std::optional<Extents>& grid) {
  if (holds_extents(form.layout)) return header.extents;
  if (!grid) refuse(path, "holds no extents; they come from its grid");
  if (header.blocks != grid->blocks()) {
    refuse(path, "holds " + counted(header.blocks, "block") + ", the grid " +
                     std::to_string(grid->blocks()));
  }
  return *grid;
}

/// The body, and whatever of the header comes only with it.
void read_body(const std::string& path, const RestartForm& form, Restart& restart) {
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  mod_gridvars::readallvars = true;
  fill_section_table(restart.sections, form.layout, restart.variables());
  mod_p3dgrid::readp3drestart(
      name_for(path), static_cast<integer>(form.encoding), precision_flag(form),
      restart.extents.blocks(), {}, restart.flow, restart.triplets, restart.extents.i,
      restart.extents.j, restart.extents.k, static_cast<integer>(form.layout), form.multiblock);
  take_run_data(restart, form.layout);
  const integer highest = static_cast<integer>(restart.flow.extent(1));
  if (form.layout == Layout::single_block) return take_extensions(path, restart);
  // Solution files have rows for five variables, however few the sections name.
  clear_variables(restart, restart.variables() + 1, highest);
  // In double precision the library reads the triplets of layout 100 but does not hand them over.
  const bool handed_over = reads_triplets(form) && !holds_doubles(form.encoding, form.precision);
  if (!handed_over) restart.triplets.deallocate();
}

void set_parameters(const Restart& restart) {
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  require_memory(mod_p3dgrid::dqvar.allocate(restart.extents.blocks(), parameters_per_block));
  for (std::size_t b = 0; b < restart.parameters.size(); ++b) {
    const FlowParameters& parameters = restart.parameters[b];
    mod_p3dgrid::dqvar(b + 1, 1) = parameters.mach;
    mod_p3dgrid::dqvar(b + 1, 2) = parameters.alpha;
    mod_p3dgrid::dqvar(b + 1, 3) = parameters.reynolds;
    mod_p3dgrid::dqvar(b + 1, 4) = parameters.time;
  }
}

}  // namespace

void set_run_data(const Restart& restart, Layout layout) {
  if (holds_step(layout)) {
    mod_p3dgrid::nstep = restart.step.value().count;
    mod_p3dgrid::dtau = restart.step.value().size;
  }
  if (holds_parameters(layout)) set_parameters(restart);
  if (layout == Layout::function) {
    mod_p3dgrid::nfvar.deallocate();
    require_memory(mod_p3dgrid::nfvar.allocate(restart.extents.blocks()));
    std::ranges::fill(mod_p3dgrid::nfvar.span(), restart.variables());
  }
  std::copy(restart.flags.begin(), restart.flags.end(), mod_p3dgrid::iflag.data());
}

namespace {

bool extends(const std::array<integer, 3>& flags) {
  bool any = false;
  for_each_extension(flags, [&](const Section&) { any = true; });
  return any;
}

}  // namespace

Sections sections_in_blocks(const Restart& restart, Layout layout) {
  if (layout != Layout::single_block || !extends(restart.flags)) return restart.sections;
  return {restart.sections.front()};
}

void allocate_flow(Restart& restart) {
  require_memory(restart.flow.allocate(restart.variables(), restart.extents.points()));
}

void allocate_triplets(Restart& restart) {
  require_memory(restart.triplets.allocate(triplet, restart.extents.points()));
  std::ranges::fill(restart.triplets.span(), 0.0F);
}

Sections sections_of(const std::string& path, const RestartForm& form,
                     const RestartHeader& header) {
  if (form.layout == Layout::function) {
    const integer functions = functions_of(path, header);
    if (form.sections && variables_in(*form.sections) != functions) {
      refuse(path, "holds " + std::to_string(functions) + " functions, --sections names " +
                       std::to_string(variables_in(*form.sections)));
    }
    return form.sections.value_or(Sections{{1, functions}});
  }
  const Sections sections = form.sections.value_or(Sections{{1, solution_variables}});
  if (reads_triplets(form) && sections.front() != Section{1, solution_variables}) {
    throw Failure(ExitStatus::unusable, std::string("layout ") + name_of(form.layout) +
                                            " begins with five variables: --sections must begin "
                                            "with 1-5");
  }
  return sections;
}

void with_advice(const std::string& path, const RestartForm& form,
                 const std::optional<Extents>& grid, const std::function<void()>& read) {
  try {
    read();
  } catch (const Unreadable& failure) {
    const std::string advice = restart_advice(path, form, grid);
    if (advice.empty()) throw;
    throw Failure(failure.status(), failure.what() + ("; " + advice));
  }
}

Restart outline_of(const std::string& path, const RestartForm& form,
                   const std::optional<Extents>& grid) {
  Restart restart;
  const RestartHeader header = read_restart_header(path, form);
  restart.sections = sections_of(path, form, header);
  restart.extents = extents_for(path, form, header, grid);
  return restart;
}

Restart read_restart(const std::string& path, const RestartForm& form,
                     const std::optional<Extents>& grid) {
  Restart restart;
  with_advice(path, form, grid, [&] {
    restart = outline_of(path, form, grid);
    const Sections stated = restart.sections;
    read_body(path, form, restart);
    RestartShape shape = shape_of(form, stated, restart.extents);
    shape.flags = restart.flags;
    require_plan(path, form, shape, grid);
  });
  return restart;
}

void write_restart(const std::string& path, const RestartForm& form, const Restart& restart) {
  const std::int64_t real = holds_doubles(form.encoding, form.precision) ? 8 : 4;
  const std::int64_t variables = restart.variables() + (holds_triplets(form.layout) ? triplet : 0);
  // How long text becomes shows only when it is there.
  const bool known = form.encoding != Encoding::formatted;
  expect_output(known ? restart.extents.points() * variables * real : 0);
  set_run_data(restart, form.layout);
  fill_section_table(sections_in_blocks(restart, form.layout), form.layout, restart.variables());
  mod_p3dgrid::writep3drestart(name_for(path), static_cast<integer>(form.encoding),
                               precision_flag(form), restart.extents.blocks(),
                               restart.extents.blocks(), restart.flow, restart.triplets,
                               restart.extents.i, restart.extents.j, restart.extents.k,
                               static_cast<integer>(form.layout), form.multiblock);
  mod_p3dgrid::p3dcloseunit(write_unit);
}

}  // namespace p3dgrid
