#include "restart_conversion.hpp"

#include <algorithm>
#include <p3dgrid/layout.hpp>

#include "form_options.hpp"
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

/// What a value is set to: as stated, as read, or 0.
template <class Value>
Value settled(const std::optional<Value>& stated, Value read, bool known, Missing& missing,
              const char* name, const char* option) {
  if (stated) return *stated;
  if (!known) missing.add(name, option);
  return known ? read : Value{};
}

void settle_step(const Conversion& conversion, RunData& run, Missing& missing) {
  const bool known = traits_of(conversion.read.form.layout).holds_step();
  const HeaderValues& values = conversion.values;
  run.nstep = settled(values.step, run.nstep, known, missing, "step count", "--step");
  run.dtau = settled(values.step_size, run.dtau, known, missing, "step size", "--step-size");
}

/// Mach number, angle of attack, Reynolds number and time of a block.
std::vector<double> settled_parameters(const Conversion& conversion, std::vector<double> read,
                                       Missing& missing) {
  const LayoutTraits& layout = traits_of(conversion.read.form.layout);
  const RunData& run = conversion.read.run;
  // Layout 0 holds the flow parameters without the time.
  const bool with_time = layout.parameters > 0;
  const bool known =
      with_time || (layout.header == HeaderKind::talven && run.eqid == equations_with_parameters);
  if (!with_time) read = {run.talxm1, run.talalfa, run.talre, 0};
  const HeaderValues& values = conversion.values;
  read.resize(static_cast<std::size_t>(traits_of(conversion.written.form.layout).parameters));
  read[0] = settled(values.mach, read[0], known, missing, "Mach number", "--mach");
  read[1] = settled(values.alpha, read[1], known, missing, "angle of attack", "--alpha");
  read[2] = settled(values.reynolds, read[2], known, missing, "Reynolds number", "--reynolds");
  read[3] = settled(values.time, read[3], with_time, missing, "time", "--time");
  return read;
}

bool holds_extensions(const SolutionHeader& header) {
  return traits_of(header.form.layout).extensions;
}

/// The option that reading the file requires, if its sections are not the default.
std::string sections_note(const Sections& sections, Layout written) {
  const Sections usual = traits_of(written).counted_variables
                             ? Sections{{1, variables_in(sections)}}
                             : Sections{{1, solution_variables}};
  if (sections == usual) return "";
  return "is read with --sections " + describe(sections);
}

/// Whether variable extensions hold variables that other records hold too.
bool repeats_variables(const SolutionHeader& header) {
  std::int32_t last = variables_in(*header.form.sections);
  for (std::size_t n = 0; n < header.flags.size(); ++n) {
    const Extension* const extension =
        extension_of(header.flags[n], static_cast<std::int32_t>(n + 1));
    if (extension == nullptr) continue;
    if (extension->variables.first <= last) return true;
    last = extension->variables.last;
  }
  return false;
}

}  // namespace

std::string obstacle(const SolutionHeader& read, const RestartForm& written) {
  const std::int32_t blocks = read.extents.blocks();
  const std::int32_t variables = read.most_variables();
  const std::string layout = layout_text(written.layout);
  if (blocks > 1 && traits_of(written.layout).one_block) {
    return layout + " holds one block, and there are " + std::to_string(blocks);
  }
  if (blocks > 1 && traits_of(written.layout).may_hold_count() && !written.multiblock) {
    return "a file without a block count (--to-multiblock no) holds one block, and there are " +
           std::to_string(blocks);
  }
  if (is_planar(written.coding)) {
    const std::string why = planar_obstacle(read.extents);
    if (!why.empty()) return why;
  }
  const bool five = traits_of(written.layout).parameters > 0 || traits_of(written.layout).triplets;
  if (five && written.layout != read.form.layout && variables < solution_variables) {
    return layout + " holds five variables, and there " +
           (variables == 1 ? "is one" : "are " + std::to_string(variables));
  }
  if (!traits_of(written.layout).extensions && repeats_variables(read)) {
    return layout + " holds each variable once, and variable extensions repeat some";
  }
  const std::int32_t fewest = std::ranges::min(read.variables);
  if (!traits_of(written.layout).counted_variables && fewest < variables) {
    return layout + " holds equally many variables in all blocks, and there are " +
           std::to_string(fewest) + " to " + std::to_string(variables);
  }
  return "";
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

Conversion conversion_of(const SolutionHeader& read, const StatedRestartForm& change,
                         const HeaderValues& values) {
  Conversion conversion{read, header_to_write(read, change), values};
  Missing missing;
  if (traits_of(conversion.written.form.layout).holds_step()) {
    settle_step(conversion, conversion.written.run, missing);
  }
  return conversion;
}

std::vector<double> Conversion::parameters(const std::vector<double>& read_parameters) const {
  Missing missing;
  if (traits_of(written.form.layout).parameters == 0) return {};
  return settled_parameters(*this, read_parameters, missing);
}

bool Conversion::holds(const FlowArray& array) const {
  if (array.triplet) return read.triplets;
  return array.number <= read.most_variables() &&
         std::ranges::none_of(read.missing(), [&](const Section& gap) {
           return gap.first <= array.number && array.number <= gap.last;
         });
}

std::vector<std::string> Conversion::notes() const {
  const LayoutTraits& layout = traits_of(written.form.layout);
  std::vector<std::string> notes;
  Missing missing;
  RunData run = read.run;
  if (layout.holds_step()) settle_step(*this, run, missing);
  if (layout.parameters > 0) {
    static_cast<void>(settled_parameters(*this, std::vector<double>(4), missing));
  }
  if (!missing.names.empty()) {
    notes.push_back("holds 0 for what the file read does not give: " + missing.names + " (" +
                    missing.options + ")");
  }
  if (written.most_variables() < read.most_variables()) {
    notes.push_back(
        "leaves out the variables " +
        describe(Sections{{written.most_variables() + 1, read.most_variables()}}) +
        " and the flow parameters from the fifth on; --to-layout 3 keeps all variables");
  }
  if (!holds_extensions(read) || !holds_extensions(written)) {
    for (const Section& gap : read.missing()) {
      notes.push_back("holds 0 for the variables " + describe(Sections{gap}) +
                      ", which the file read skips");
    }
    const std::string note = sections_note(*written.form.sections, written.form.layout);
    if (!note.empty()) notes.push_back(note);
  }
  if (layout.triplets && !holds({1, true})) {
    notes.emplace_back("holds 0 for the triplets, which the file read does not give");
  }
  return notes;
}

}  // namespace p3dgrid::tool
