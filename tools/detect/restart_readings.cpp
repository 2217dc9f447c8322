#include <algorithm>
#include <array>

#include "detect/outline.hpp"
#include "detect/reading.hpp"
#include "detect/section_search.hpp"
#include "restart_plan.hpp"
#include "table.hpp"

namespace p3dgrid {
namespace {

using mod_p3dgrid::integer;

constexpr std::array layouts = {Layout::solution, Layout::function, Layout::time_step,
                                Layout::talven,   Layout::triplets, Layout::single_block,
                                Layout::bare};

bool differ(const std::vector<integer>& counts) {
  return std::ranges::adjacent_find(counts, std::ranges::not_equal_to()) != counts.end();
}

/// The forms that a layout takes of a coding, apart from its sections.
std::vector<RestartForm> forms_of(Layout layout, const Coding& coding,
                                  const StatedRestartForm& stated) {
  std::vector<RestartForm> forms;
  for (const bool multiblock : {true, false}) {
    if (stated.multiblock && *stated.multiblock != multiblock) continue;
    // The option says nothing of other layouts.
    if (!may_hold_count(layout) && !stated.multiblock && !multiblock) continue;
    forms.push_back(
        {layout, coding.encoding, coding.precision, multiblock, coding.order, stated.sections});
  }
  return forms;
}

/// What a header alone lets be said, where no grid gives the extents. Without markers anything
/// could be such a file, so that its layout has to be stated.
void add_unchecked(std::vector<Reading>& readings, Evidence& file, const Coding& coding,
                   const RestartForm& form, bool stated) {
  if (coding.encoding != Encoding::unformatted && !stated) return;
  if (coding.encoding == Encoding::unformatted && !file.all_records_sound(coding.order)) return;
  readings.push_back({.form = form, .own_extents = false, .checked = false});
}

Fit other_blocks(const Outline& outline, const Extents& grid) {
  return {
      Fit::Agreement::other, 0,
      "holds " + counted(outline.blocks, "block") + ", the grid " + std::to_string(grid.blocks())};
}

/// The readings of one form whose extents are known: one for each way to spread its variables.
class ReadingsOf {
 public:
  ReadingsOf(Evidence& file, const Coding& coding, const RestartForm& form, const Outline& outline,
             const std::optional<Extents>& grid)
      : file_(file), coding_(coding), form_(form), outline_(outline) {
    own_ = !outline.extents.i.empty();
    shape_.extents = own_ ? outline.extents : *grid;
    shape_.flow_parameters = outline.flow_parameters;
    shape_.older_levels = outline.older_levels;
    if (differ(outline.functions)) shape_.functions = outline.functions;
  }

  std::vector<Reading> all() {
    if (form_.layout == Layout::single_block) {
      for (const auto& flags : possible_flags()) add(true, flags);
    } else if (form_.layout == Layout::triplets) {
      add(true, {end_of_extensions});
      // Read without the triplets that are always written.
      if (!reads_triplets(form_)) add(false, {end_of_extensions});
    } else {
      add(false, {end_of_extensions});
    }
    return std::move(readings_);
  }

 private:
  using Flags = std::array<integer, 3>;

  /// Chains of flags that announce different records; 0 stands for a flag that announces none.
  static std::vector<Flags> possible_flags() {
    std::vector<Flags> chains = {{end_of_extensions}};
    for (const integer first : {1, 41, 0}) {
      chains.push_back({first, end_of_extensions});
      for (const integer second : {1, 41, 0}) chains.push_back({first, second, end_of_extensions});
    }
    return chains;
  }

  static bool announces_nothing(const Flags& flags) {
    return *std::ranges::find_if(
               flags, [](integer flag) { return flag == 0 || flag == end_of_extensions; }) == 0;
  }

  void add(bool triplets, const Flags& flags) {
    shape_.triplets = triplets;
    shape_.flags = flags;
    for (const Sections& sections :
         possible_sections(file_, coding_, form_, shape_, outline_.functions)) {
      shape_.sections = sections;
      const auto plan = plan_of(form_, shape_);
      Reading reading{.form = form_,
                      .extents = shape_.extents,
                      .own_extents = own_,
                      .records = plan.size(),
                      .fit = file_.fit(coding_, plan)};
      std::get<RestartForm>(reading.form).sections = sections;
      reading.free_count = coding_.encoding != Encoding::unformatted && !form_.sections &&
                           form_.layout != Layout::function &&
                           variables_in(sections) != solution_variables;
      if (triplets && !reads_triplets(form_)) reading.unreadable = triplets_not_read;
      if (!flags_agree(reading, plan)) continue;
      reading.unknown_flag = announces_nothing(flags);
      // Any number of variables, and any value for a flag, would say nothing.
      if (reading.free_count && reading.unknown_flag) continue;
      readings_.push_back(std::move(reading));
    }
  }

  /// Whether the flags assumed stand where they are assumed; what is not there agrees.
  bool flags_agree(const Reading& reading, const std::vector<RecordPlan>& plan) {
    if (form_.layout != Layout::single_block || !reading.fit.whole()) return true;
    std::size_t flag = 0;
    for (std::size_t n = 1; n < plan.size(); ++n) {
      const bool is_flag = plan[n].integers == 1 && plan[n].reals == 0;
      if (is_flag && !flag_agrees(plan, n, shape_.flags.at(flag++))) return false;
    }
    return true;
  }

  bool flag_agrees(const std::vector<RecordPlan>& plan, std::size_t record, integer assumed) {
    const auto flag = file_.integer_of_record(coding_, plan, record);
    if (!flag) return false;
    const bool announces = *flag == 1 || *flag == 41 || *flag == end_of_extensions;
    return announces ? *flag == assumed : assumed == 0;
  }

  Evidence& file_;
  const Coding& coding_;
  const RestartForm& form_;
  const Outline& outline_;
  bool own_ = true;
  RestartShape shape_;
  std::vector<Reading> readings_;
};

}  // namespace

std::vector<Reading> restart_readings(Evidence& file, const StatedRestartForm& stated,
                                      const std::optional<Extents>& grid) {
  std::vector<Reading> readings;
  for (const Coding& coding :
       codings_of(file, stated.encoding, stated.byte_order, stated.precision)) {
    for (const Layout layout : layouts) {
      if (stated.layout && *stated.layout != layout) continue;
      for (const RestartForm& form : forms_of(layout, coding, stated)) {
        const auto outline = restart_outline(*file.header(coding), form);
        if (!outline) continue;
        if (!outline->extents.i.empty() || (grid && grid->blocks() == outline->blocks)) {
          auto found = ReadingsOf(file, coding, form, *outline, grid).all();
          std::ranges::move(found, std::back_inserter(readings));
        } else if (!grid) {
          add_unchecked(readings, file, coding, form, stated.layout.has_value());
        } else {
          readings.push_back(
              {.form = form, .own_extents = false, .fit = other_blocks(*outline, *grid)});
        }
      }
    }
  }
  return readings;
}

}  // namespace p3dgrid
