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

/// A header value of the file written.
struct SettledValue {
  const char* name;
  const char* option;
  std::optional<double> stated;
  bool known;  ///< the file read gives it

  /// As stated, as read, or 0.
  [[nodiscard]] double settled(double read) const { return stated.value_or(known ? read : 0); }
};

/// The header values that the layout of the file written has: step count and step size, or Mach
/// number, angle of attack, Reynolds number and time of each block.
std::vector<SettledValue> settled_values(const Conversion& conversion) {
  const LayoutTraits& layout = traits_of(conversion.read.form.layout);
  const LayoutTraits& written = traits_of(conversion.written.form.layout);
  const HeaderValues& values = conversion.values;
  if (written.holds_step()) {
    return {{"step count", "--step", values.step, layout.holds_step()},
            {"step size", "--step-size", values.step_size, layout.holds_step()}};
  }
  if (written.parameters == 0) return {};
  // Layout 0 holds the flow parameters without the time.
  const bool with_time = layout.parameters > 0;
  const bool known = with_time || (layout.header == HeaderKind::talven &&
                                   conversion.read.run.eqid == equations_with_parameters);
  return {{"Mach number", "--mach", values.mach, known},
          {"angle of attack", "--alpha", values.alpha, known},
          {"Reynolds number", "--reynolds", values.reynolds, known},
          {"time", "--time", values.time, with_time}};
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

std::string obstacle(const HeaderValues& values, const RestartForm& written) {
  const LayoutTraits& layout = traits_of(written.layout);
  if (!layout.writable) {
    return layout.more_parameters
               ? "files of layout overflow can be read, but not written; --to-layout 3 keeps all "
                 "variables, --to-layout 2 five of them and four flow parameters"
               : "files of layout 0 can be read, but not written; --to-layout 1 keeps the step "
                 "count and size";
  }
  if (!has_files_of(layout, written.coding)) {
    return no_planar_files + std::string("; --to-dimensions 3 writes it in three");
  }
  const bool parameters = values.mach || values.alpha || values.reynolds || values.time;
  if (parameters && layout.parameters == 0) {
    return layout_text(written.layout) + " has no place for --mach, --alpha, --reynolds and --time";
  }
  const bool step = values.step || values.step_size;
  if (step && !layout.holds_step()) {
    return layout_text(written.layout) + " has no place for --step and --step-size";
  }
  return "";
}

Conversion conversion_of(const SolutionHeader& read, const StatedRestartForm& change,
                         const HeaderValues& values) {
  Conversion conversion{read, header_to_write(read, change), values};
  if (traits_of(conversion.written.form.layout).holds_step()) {
    RunData& run = conversion.written.run;
    const std::vector<SettledValue> step = settled_values(conversion);
    run.nstep = static_cast<std::int32_t>(step[0].settled(run.nstep));
    run.dtau = step[1].settled(run.dtau);
  }
  return conversion;
}

std::vector<double> Conversion::parameters(const std::vector<double>& read_parameters) const {
  if (traits_of(written.form.layout).parameters == 0) return {};
  const RunData& run = read.run;
  const bool in_blocks = traits_of(read.form.layout).parameters > 0;
  const std::vector<double> given =
      in_blocks ? read_parameters : std::vector{run.talxm1, run.talalfa, run.talre, 0.0};
  std::vector<double> parameters;
  for (const SettledValue& value : settled_values(*this)) {
    parameters.push_back(value.settled(given[parameters.size()]));
  }
  return parameters;
}

std::vector<std::string> Conversion::notes() const {
  const LayoutTraits& layout = traits_of(written.form.layout);
  std::vector<std::string> notes;
  std::string names;
  std::string options;
  for (const SettledValue& value : settled_values(*this)) {
    if (value.stated || value.known) continue;
    names += (names.empty() ? "" : ", ") + std::string(value.name);
    options += (options.empty() ? "" : ", ") + std::string(value.option);
  }
  if (!names.empty()) {
    notes.push_back("holds 0 for what the file read does not give: " + names + " (" + options +
                    ")");
  }
  if (written.most_variables() < read.most_variables()) {
    notes.push_back(
        "leaves out the variables " +
        describe(Sections{{written.most_variables() + 1, read.most_variables()}}) +
        " and the flow parameters from the fifth on; --to-layout 3 keeps all variables");
  }
  if (!traits_of(read.form.layout).extensions || !layout.extensions) {
    for (const Section& gap : read.missing()) {
      notes.push_back("holds 0 for the variables " + describe(Sections{gap}) +
                      ", which the file read skips");
    }
    const Sections& sections = *written.form.sections;
    const Sections usual{
        {1, layout.counted_variables ? variables_in(sections) : solution_variables}};
    if (sections != usual) notes.push_back("is read with --sections " + describe(sections));
  }
  if (layout.triplets && !read.triplets) {
    notes.emplace_back("holds 0 for the triplets, which the file read does not give");
  }
  return notes;
}

}  // namespace p3dgrid::tool
