#include "restart_file.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "console.hpp"
#include "failure.hpp"
#include "form_options.hpp"
#include "paths.hpp"
#include "progress.hpp"
#include "restart_steps.hpp"
#include "section_table.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

constexpr integer write_unit = 301;

void require_memory(integer allocation_status) {
  if (allocation_status != mod_p3dgrid::allocation_done) throw std::bad_alloc();
}

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  throw Unreadable(path + ": " + what);
}

logical precision_flag(const RestartForm& form) {
  return form.coding.precision == Precision::double_precision;
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

}  // namespace

void require_plan(const std::string& path, RestartForm form, const Sections& sections,
                  const Extents& extents, const std::optional<Extents>& grid) {
  form.sections = sections;
  const bool triplets = reads_triplets(traits_of(form.layout), form.coding);
  const Fit fit = fit_of(path, form, extents, triplets);
  if (fit.whole()) return;
  if (only_followed(fit, form.coding.encoding)) {
    const bool records = fit.agreement == Fit::Agreement::longer;
    return print_note(path + ": " + fit.what + ", and are left out" +
                      (records ? "; --sections may be longer than " + describe(sections) : ""));
  }
  const std::string message = path + ": is not " + describe(form) + " with the sections " +
                              describe(sections) + ": " + fit.what;
  if (traits_of(form.layout).triplets && !triplets && fit_of(path, form, extents, true).whole()) {
    throw Failure(ExitStatus::mismatch, path + ": " + triplets_not_read);
  }
  const std::string help = advice(path, stated_as(form), grid);
  throw Failure(ExitStatus::mismatch, message, help.empty() ? "" : "; " + help);
}

namespace {

/// The extents by which the body is read: the header's own, or the grid's.
Extents extents_for(const std::string& path, const RestartForm& form, const RestartHeader& header,
                    const std::optional<Extents>& grid) {
  if (traits_of(form.layout).holds_extents()) return header.extents;
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
  mod_p3dgrid::readp3drestart(name_for(path, form.coding.byte_order),
                              static_cast<integer>(form.coding.encoding), precision_flag(form),
                              restart.extents.blocks(), {}, restart.flow, restart.triplets,
                              restart.extents.i, restart.extents.j, restart.extents.k,
                              static_cast<integer>(form.layout), form.multiblock);
  take_run_data(restart, form.layout);
  const integer highest = static_cast<integer>(restart.flow.extent(1));
  if (form.layout == Layout::single_block) return take_extensions(path, restart);
  // Solution files have rows for five variables, however few the sections name.
  clear_variables(restart, restart.variables() + 1, highest);
  // In double precision the library reads the triplets of layout 100 but does not hand them over.
  const bool handed_over =
      reads_triplets(traits_of(form.layout), form.coding) && !holds_doubles(form.coding);
  if (!handed_over) restart.triplets.deallocate();
}

}  // namespace

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
  if (reads_triplets(traits_of(form.layout), form.coding) &&
      sections.front() != Section{1, solution_variables}) {
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
    const std::string help = advice(path, stated_as(form), grid);
    if (help.empty()) throw;
    throw Failure(failure.status(), failure.what(), "; " + help);
  }
}

Restart outline_of(const std::string& path, const RestartForm& form,
                   const std::optional<Extents>& extents) {
  Restart restart;
  const RestartHeader header = read_restart_header(path, form);
  restart.sections = sections_of(path, form, header);
  restart.extents = extents_for(path, form, header, extents);
  return restart;
}

std::optional<Extents> extents_to_read_by(const Found& found, const std::optional<Extents>& grid) {
  return found.reading.extents == nullptr ? grid : std::optional(*found.reading.extents);
}

bool is_proven(const Found& found) {
  return !found.stated && found.reading.checked && found.reading.fit.whole();
}

Restart read_restart(const std::string& path, const Found& found,
                     const std::optional<Extents>& grid) {
  const RestartForm& form = found.restart();
  Restart restart;
  with_advice(path, form, grid, [&] {
    restart = outline_of(path, form, extents_to_read_by(found, grid));
    const Sections stated = restart.sections;
    read_body(path, form, restart);
    if (is_proven(found)) return;
    require_plan(path, form, stated, restart.extents, grid);
  });
  return restart;
}

void write_restart(const std::string& path, const RestartForm& form, const Restart& restart) {
  const std::int64_t real = holds_doubles(form.coding) ? 8 : 4;
  const std::int64_t variables =
      restart.variables() + (traits_of(form.layout).triplets ? triplet : 0);
  // How long text becomes shows only when it is there.
  const bool known = form.coding.encoding != Encoding::formatted;
  expect_output(known ? restart.extents.points() * variables * real : 0);
  set_run_data(restart, form.layout);
  fill_section_table(sections_in_blocks(restart, form.layout), form.layout, restart.variables());
  mod_p3dgrid::writep3drestart(
      name_for(path, form.coding.byte_order), static_cast<integer>(form.coding.encoding),
      precision_flag(form), restart.extents.blocks(), restart.extents.blocks(), restart.flow,
      restart.triplets, restart.extents.i, restart.extents.j, restart.extents.k,
      static_cast<integer>(form.layout), form.multiblock);
  mod_p3dgrid::p3dcloseunit(write_unit);
}

}  // namespace p3dgrid::tool
