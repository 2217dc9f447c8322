#include "restart_conversion.hpp"

#include "table.hpp"

namespace p3dgrid::tool {
namespace {

std::string layout_text(Layout layout) {
  return std::string("layout ") + name_of(layout);
}

/// Names of the values that are set to 0 because they are unknown.
struct Missing {
  std::string names;
  std::string options;

  void add(const std::string& name, const std::string& option) {
    names += (names.empty() ? "" : ", ") + name;
    options += (options.empty() ? "" : ", ") + option;
  }
};

template <class Value>
void settle(Value& target, const std::optional<Value>& stated, bool read, Missing& missing,
            const char* name, const char* option) {
  if (stated) {
    target = *stated;
  } else if (!read) {
    missing.add(name, option);
  }
}

void settle_step(Restart& restart, const HeaderValues& values, Missing& missing) {
  const bool read = restart.step.has_value();
  TimeStep step = restart.step.value_or(TimeStep{});
  settle(step.count, values.step, read, missing, "step count", "--step");
  settle(step.size, values.step_size, read, missing, "step size", "--step-size");
  restart.step = step;
}

// Layout 0 holds the flow parameters without the time.
void settle_parameters(Restart& restart, const RestartForm& form, const HeaderValues& values,
                       Missing& missing) {
  const bool read = !restart.parameters.empty();
  const bool with_time = traits_of(form.layout).parameters > 0;
  restart.parameters.resize(restart.extents.i.size());
  for (FlowParameters& block : restart.parameters) {
    missing = {};
    settle(block.mach, values.mach, read, missing, "Mach number", "--mach");
    settle(block.alpha, values.alpha, read, missing, "angle of attack", "--alpha");
    settle(block.reynolds, values.reynolds, read, missing, "Reynolds number", "--reynolds");
    settle(block.time, values.time, read && with_time, missing, "time", "--time");
  }
}

bool begins_with_solution(const Sections& sections) {
  return sections.front() == Section{1, solution_variables};
}

void settle_sections(Restart& restart, Layout written, Layout read) {
  const integer variables = restart.variables();
  if (traits_of(written).counted_variables && read != written) restart.sections = {{1, variables}};
  if (!traits_of(written).triplets || begins_with_solution(restart.sections)) return;
  restart.sections = {{1, solution_variables}};
  if (variables > solution_variables) {
    restart.sections.push_back({solution_variables + 1, variables});
  }
}

/// The option that reading the file requires, if its sections are not the default.
std::string sections_note(const Sections& sections, Layout written) {
  const Sections usual = traits_of(written).counted_variables
                             ? Sections{{1, variables_in(sections)}}
                             : Sections{{1, solution_variables}};
  if (sections == usual) return "";
  return "is read with --sections " + describe(sections);
}

void settle_triplets(Restart& restart, std::vector<std::string>& notes) {
  if (restart.triplets.allocated()) return;
  allocate_triplets(restart);
  notes.emplace_back("holds 0 for the triplets, which the file read does not give");
}

}  // namespace

std::string obstacle(const Restart& restart, const RestartForm& read, const RestartForm& written) {
  const integer blocks = restart.extents.blocks();
  const std::string layout = layout_text(written.layout);
  if (blocks > 1 && traits_of(written.layout).one_block) {
    return layout + " holds one block, and there are " + std::to_string(blocks);
  }
  if (blocks > 1 && traits_of(written.layout).may_hold_count() && !written.multiblock) {
    return "a file without a block count (--to-multiblock no) holds one block, and there are " +
           std::to_string(blocks);
  }
  if (is_planar(written.coding)) {
    std::string why = planar_obstacle(restart.extents);
    for (integer v = 1; why.empty() && restart.flow.allocated() && v <= restart.variables(); ++v) {
      why = obstacle(v, written, restart.flow, v);
    }
    if (!why.empty()) return why;
  }
  const bool five = traits_of(written.layout).parameters > 0 || traits_of(written.layout).triplets;
  if (five && written.layout != read.layout && restart.variables() < solution_variables) {
    return layout + " holds five variables, and there " +
           (restart.variables() == 1 ? "is one" : "are " + std::to_string(restart.variables()));
  }
  return "";
}

std::string obstacle(integer variable, const RestartForm& written,
                     mod_p3dgrid::array_view<const float, 2> values, std::int64_t row) {
  const bool absent = variable == absent_variable(traits_of(written.layout), written.coding);
  return absent && !is_zero(values, row) ? planar_obstacle("a third momentum other than 0") : "";
}

std::string obstacle(const HeaderValues& values, Layout layout) {
  const bool parameters = values.mach || values.alpha || values.reynolds || values.time;
  const bool step = values.step || values.step_size;
  const std::string text = layout_text(layout);
  if (parameters && traits_of(layout).parameters == 0) {
    return text + " has no place for --mach, --alpha, --reynolds and --time";
  }
  if (step && !traits_of(layout).holds_step())
    return text + " has no place for --step and --step-size";
  return "";
}

std::vector<std::string> adapt(Restart& restart, const RestartForm& read,
                               const RestartForm& written, const HeaderValues& values) {
  std::vector<std::string> notes;
  Missing missing;
  if (traits_of(written.layout).holds_step()) settle_step(restart, values, missing);
  if (traits_of(written.layout).parameters > 0) settle_parameters(restart, read, values, missing);
  if (!missing.names.empty()) {
    notes.push_back("holds 0 for what the file read does not give: " + missing.names + " (" +
                    missing.options + ")");
  }
  const bool extensions_stay =
      traits_of(written.layout).extensions && traits_of(read.layout).extensions;
  if (!extensions_stay) {
    for (const Section& gap : restart.missing) {
      notes.push_back("holds 0 for the variables " + describe(Sections{gap}) +
                      ", which the file read skips");
    }
    restart.flags = {end_of_extensions, 0, 0};
    settle_sections(restart, written.layout, read.layout);
    const std::string note = sections_note(restart.sections, written.layout);
    if (!note.empty()) notes.push_back(note);
  }
  if (traits_of(written.layout).triplets) settle_triplets(restart, notes);
  return notes;
}

}  // namespace p3dgrid::tool
