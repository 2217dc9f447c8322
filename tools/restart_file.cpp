#include "restart_file.hpp"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "console.hpp"
#include "failure.hpp"
#include "library.hpp"
#include "progress.hpp"
#include "restart_module.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

constexpr integer read_unit = 201;
constexpr integer write_unit = 301;

/// Closes the unit, also when reading fails.
struct UnitCloser {
  UnitCloser() = default;
  UnitCloser(const UnitCloser&) = delete;
  UnitCloser& operator=(const UnitCloser&) = delete;
  ~UnitCloser() { mod_p3dgrid::p3dcloseunit(read_unit); }
};

/// The library does not check the extents in a header.
void require_countable_points(const std::string& path, const Extents& extents) {
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    const std::int64_t layer = std::int64_t{extents.i[b]} * extents.j[b];
    constexpr std::int64_t most = std::numeric_limits<integer>::max();
    const bool negative = extents.i[b] < 0 || extents.j[b] < 0 || extents.k[b] < 0;
    if (!negative && (layer == 0 || extents.k[b] <= most / layer)) continue;
    throw Unreadable(path + ": block " + std::to_string(b + 1) + " has extents of " +
                     extents.text_of(b) + ", which no block can have");
  }
}

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  throw Unreadable(path + ": " + what);
}

/// The number of functions, which must be the same in every block, because all blocks are read with
/// one list of sections.
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

/// Throws a Failure if the lengths in the file do not fit the form, sections and extents.
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
    throw Mismatch(path + ": " + triplets_not_read);
  }
  const std::string help = advice(path, stated_as(form), grid);
  throw Mismatch(message, help.empty() ? "" : "; " + help);
}

/// The sections stated, or the default of the layout. Throws a Failure if the file cannot have
/// them.
Sections sections_of(const std::string& path, const RestartForm& form,
                     const RestartHeader& header) {
  if (traits_of(form.layout).counted_variables) {
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
    throw Unusable(std::string("layout ") + name_of(form.layout) +
                   " begins with five variables: --sections must begin "
                   "with 1-5");
  }
  return sections;
}

/// The extents in the header, or those of the grid.
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

/// Reads the body, and the header values that only come with it.
void read_body(const std::string& path, const RestartForm& form, Restart& restart) {
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  mod_gridvars::readallvars = true;
  set_section_table(restart.sections, form.layout, restart.variables());
  mod_p3dgrid::readp3drestart(
      name_for(path, form.coding), format_code(form.coding), precision_flag(form.coding),
      restart.extents.blocks(), {}, restart.flow, restart.triplets, restart.extents.i,
      restart.extents.j, restart.extents.k, static_cast<integer>(form.layout), form.multiblock);
  take_run_data(restart, form.layout);
  const integer highest = static_cast<integer>(restart.flow.extent(1));
  if (traits_of(form.layout).extensions) return take_extensions(path, restart);
  // Solution files have rows for five variables, however few the sections name.
  clear_variables(restart, restart.variables() + 1, highest);
  // In double precision the library reads the triplets of layout 100 but does not return them.
  const bool handed_over =
      reads_triplets(traits_of(form.layout), form.coding) && !holds_doubles(form.coding);
  if (!handed_over) restart.triplets.deallocate();
}

}  // namespace

RestartHeader read_restart_header(const std::string& path, const RestartForm& form) {
  // The library reuses an allocated array, even with the counts of another file.
  mod_p3dgrid::nfvar.deallocate();
  RestartHeader header;
  allocatable<integer, 1> idim, jdim, kdim;
  try {
    const UnitCloser closer;
    mod_p3dgrid::readrestartheader(
        name_for(path, form.coding), format_code(form.coding), precision_flag(form.coding),
        header.blocks, static_cast<integer>(form.layout), form.multiblock, idim, jdim, kdim);
  } catch (const Halt&) {
    throw Unreadable(path + ": layout 0 with flow parameters cannot be read in single precision");
  }
  if (header.blocks < 1) {
    throw Unreadable(path + ": has a block count of " + std::to_string(header.blocks));
  }
  if (traits_of(form.layout).holds_extents()) header.extents = extents_from(idim, jdim, kdim);
  require_countable_points(path, header.extents);
  if (traits_of(form.layout).counted_variables) {
    const auto counts = mod_p3dgrid::nfvar.span();
    header.functions.assign(counts.begin(), counts.end());
  }
  return header;
}

RestartHeader header_with_advice(const std::string& path, const RestartForm& form) {
  return with_advice([&] { return read_restart_header(path, form); },
                     [&] { return advice(path, stated_as(form), std::nullopt); });
}

bool talven_parameters_read() {
  return mod_p3dgrid::eqid == equations_with_parameters;
}

void require_regular_file(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  // Opening reports folders and missing files.
  if (!std::filesystem::is_other(status)) return;
  throw Unusable(path + ": is not a regular file; restart files are read more than once");
}

void allocate_flow(Restart& restart) {
  require_memory(restart.flow.allocate(restart.variables(), restart.extents.points()));
}

void allocate_triplets(Restart& restart) {
  require_memory(restart.triplets.allocate(triplet, restart.extents.points()));
  std::ranges::fill(restart.triplets.span(), 0.0F);
}

Restart read_restart(const std::string& path, const Found& found,
                     const std::optional<Extents>& grid) {
  return read_restart(path, found, grid,
                      [&](Restart& restart) { read_body(path, found.restart(), restart); });
}

Restart read_restart(const std::string& path, const Found& found,
                     const std::optional<Extents>& grid,
                     const std::function<void(Restart&)>& read_body) {
  const RestartForm& form = found.restart();
  const auto& in_file = found.reading.extents;
  const auto read = [&] {
    Restart restart;
    const RestartHeader header = read_restart_header(path, form);
    restart.sections = sections_of(path, form, header);
    restart.extents = extents_for(path, form, header, in_file ? *in_file : grid);
    const Sections stated = restart.sections;
    read_body(restart);
    const Reading& reading = found.reading;
    const bool proven = !found.stated && reading.checked && reading.fit.whole();
    if (!proven) require_plan(path, form, stated, restart.extents, grid);
    return restart;
  };
  return with_advice(read, [&] { return advice(path, stated_as(form), grid); });
}

void write_restart(const std::string& path, const RestartForm& form, const Restart& restart) {
  const std::int64_t values = restart.variables() + (traits_of(form.layout).triplets ? triplet : 0);
  expect_values(form.coding, restart.extents.points() * values);
  set_run_data(restart, form.layout);
  set_section_table(sections_in_blocks(restart, form.layout), form.layout, restart.variables());
  mod_p3dgrid::writep3drestart(name_for(path, form.coding), format_code(form.coding),
                               precision_flag(form.coding), restart.extents.blocks(),
                               restart.extents.blocks(), restart.flow, restart.triplets,
                               restart.extents.i, restart.extents.j, restart.extents.k,
                               static_cast<integer>(form.layout), form.multiblock);
  mod_p3dgrid::p3dcloseunit(write_unit);
}

}  // namespace p3dgrid::tool
