#include <algorithm>

#include "detect/steps.hpp"

namespace p3dgrid {
namespace {

/// The possible forms of a layout, without sections that are not stated.
std::vector<RestartForm> forms_of(const LayoutTraits& layout, const Coding& coding,
                                  const StatedRestartForm& stated) {
  const std::vector<bool> counts =
      layout.may_hold_count() ? std::vector{true, false} : std::vector{true};
  std::vector<RestartForm> forms;
  for (const bool multiblock : choices(stated.multiblock, counts)) {
    forms.push_back({layout.layout, coding, multiblock, stated.sections});
  }
  return forms;
}

/// Whether a file without known extents is a reading although its body cannot be compared. Without
/// markers any file would be, so its layout must be stated.
bool may_go_unchecked(Evidence& file, const RestartForm& form, bool stated) {
  if (form.coding.encoding != Encoding::unformatted) return stated;
  return file.all_records_sound(form.coding);
}

/// Whether blocks can begin with a leading record. In layout 100 in single-precision records they
/// need not, because the module reads them without.
std::vector<bool> possible_leading(const RestartForm& form) {
  const LayoutTraits& layout = traits_of(form.layout);
  if (!layout.triplets) return {false};
  if (reads_triplets(layout, form.coding)) return {true};
  return {true, false};
}

struct RestartSearch {
  Evidence& file;
  const StatedRestartForm& stated;
  const std::shared_ptr<const Extents>& grid;
  EmptyBlocks empty;
  std::vector<Candidate> candidates;
  std::vector<SectionSearch> texts = {};  ///< text without stated sections
  std::vector<Reading> found = {};

  std::vector<Reading> readings() {
    for (const Coding& coding : codings_of(file, stated.coding)) {
      for (const LayoutTraits& layout : all_layouts()) {
        if (stated.layout.value_or(layout.layout) != layout.layout) continue;
        if (!has_files_of(layout, coding)) continue;
        for (const RestartForm& form : forms_of(layout, coding, stated)) examine(form);
      }
    }
    take_fits();
    // The number of variables of a text follows from the number of its values.
    for (const SectionSearch& search : texts) {
      std::vector<Sections> tables = sections_by_size(search);
      std::erase(tables, usual_sections(search));
      add(search, tables);
    }
    take_fits();
    return std::move(found);
  }

  void examine(const RestartForm& form) {
    const auto outline = file.outline(form, empty);
    if (!outline) return;
    const bool own = outline->extents != nullptr;
    if (!own && !grid) {
      if (!may_go_unchecked(file, form, stated.layout.has_value())) return;
      found.push_back({.form = form, .own_extents = false, .checked = false});
    } else if (!own && grid->blocks() != outline->blocks) {
      Fit other{Fit::Agreement::other, 0,
                "holds " + counted(outline->blocks, "block") + ", the grid " +
                    std::to_string(grid->blocks())};
      found.push_back({.form = form, .own_extents = false, .fit = std::move(other)});
    } else {
      for (const bool leading : possible_leading(form)) {
        add({file, form, *outline, own ? outline->extents : grid, leading});
      }
    }
  }

  void add(const SectionSearch& search) {
    const RestartForm& form = search.form;
    if (form.sections) {
      if (can_have_stated_sections(search)) add(search, *form.sections);
      return;
    }
    std::vector<Sections> tables;
    const Encoding encoding = form.coding.encoding;
    const bool counted = traits_of(form.layout).counted_variables;
    if (encoding == Encoding::unformatted) tables = sections_in_records(search);
    if (encoding == Encoding::binary && !counted) tables = sections_by_size(search);
    if (encoding == Encoding::formatted && !counted) texts.push_back(search);
    tables.push_back(usual_sections(search));
    add(search, tables);
  }

  void add(const SectionSearch& search, const std::vector<Sections>& tables) {
    for (auto table = tables.begin(); table != tables.end(); ++table) {
      if (std::find(tables.begin(), table, *table) == table) add(search, *table);
    }
  }

  void add(const SectionSearch& search, const Sections& sections) {
    Reading reading{.form = search.form,
                    .extents = search.extents,
                    .own_extents = search.outline.extents != nullptr};
    std::get<RestartForm>(reading.form).sections = sections;
    reading.free_count = search.form.coding.encoding != Encoding::unformatted &&
                         !search.form.sections &&
                         !traits_of(search.form.layout).counted_variables &&
                         variables_in(sections) != solution_variables;
    reading.triplets = search.leading;
    candidates.push_back({std::move(reading), search.plan(sections)});
  }

  void take_fits() {
    for (Reading& reading : fitted(file, std::exchange(candidates, {}))) {
      // With a free number of variables and a free flag any file agrees, and in two dimensions many
      // files of three.
      const bool planar = is_planar(reading.coding()) && !stated.coding.dimensions;
      if (reading.free_count && (reading.unknown_flag || planar)) continue;
      found.push_back(std::move(reading));
    }
  }
};

}  // namespace

std::vector<Reading> restart_readings(Evidence& file, const StatedRestartForm& stated,
                                      const std::shared_ptr<const Extents>& grid, EmptyBlocks empty,
                                      std::vector<Candidate> others) {
  return RestartSearch{file, stated, grid, empty, std::move(others)}.readings();
}

}  // namespace p3dgrid
