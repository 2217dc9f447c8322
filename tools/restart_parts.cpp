#include <algorithm>

#include "console.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "form_options.hpp"
#include "parts.hpp"
#include "progress.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

/// Refuses solutions that cannot be in one file.
void require_alike(const CaseInput& first, const CaseInput& other) {
  const RestartForm& one = first.restart().header().form;
  const RestartForm& form = other.restart().header().form;
  const std::string two = other.restart_path() + ": has ";
  if (one.layout != form.layout) {
    throw Mismatch(two + "layout " + name_of(form.layout) + ", and " + first.restart_path() +
                   " layout " + name_of(one.layout) + "; 'p3dgrid restart' converts one");
  }
  if (!traits_of(one.layout).counted_variables && one.sections != form.sections) {
    throw Mismatch(two + "the sections " + describe(*form.sections) + ", and " +
                   first.restart_path() + " " + describe(*one.sections));
  }
}

/// The header of all parts, as if they had been read from one file.
SolutionHeader combined_header(const Parts& parts) {
  SolutionHeader header = parts.inputs.front().restart().header();
  const Extents extents = parts.extents();
  header.blocks = extents.blocks();
  header.extents = extents;
  header.variables.clear();
  for (const CaseInput& input : parts.inputs) {
    require_alike(parts.inputs.front(), input);
    const SolutionHeader& other = input.restart().header();
    if (holds_doubles(other.form.coding)) {
      header.form.coding.precision = Precision::double_precision;
    }
    header.triplets = header.triplets && other.triplets;
  }
  for (const Part& part : parts.list) {
    header.variables.push_back(parts.inputs[part.input].restart().header().variables[part.block]);
  }
  if (traits_of(header.form.layout).counted_variables) {
    header.form.sections = Sections{{1, header.most_variables()}};
  }
  return header;
}

Reals read(const Parts& parts, const Part& part, const FlowArray& array) {
  const CaseInput& input = parts.inputs[part.input];
  Reals values = input.restart().read(part.block, array, part.range);
  if (part.orientation != Orientation{}) {
    values =
        reorient(values, part.range.extents_in(input.restart().header().extents.of(part.block)),
                 part.orientation);
  }
  if (parts.edit_array) parts.edit_array(array, values);
  return values;
}

/// Announces the values of all arrays.
void expect_arrays(const SolutionHeader& header) {
  std::int64_t values = 0;
  for (std::size_t b = 0; b < header.extents.i.size(); ++b) {
    const std::int64_t triplets = traits_of(header.form.layout).triplets ? triplet : 0;
    values += (header.variables[b] + triplets) * header.extents.points_of(b);
  }
  expect_values(header.form.coding, values);
}

/// Copies all arrays, one at a time.
void copy(const Parts& parts, const Conversion& conversion, const OutputFile& output) {
  const SolutionHeader& written = conversion.written;
  const RestartForm& form = written.form;
  const std::int32_t absent = absent_variable(traits_of(form.layout), form.coding);
  expect_arrays(written);
  SolutionWriter writer(output.temporary_path(), written);
  for (std::size_t b = 0; b < parts.list.size(); ++b) {
    const Part& part = parts.list[b];
    RestartInput& input = parts.inputs[part.input].restart();
    writer.write(conversion.parameters(input.parameters(part.block)), [&](const FlowArray& array) {
      if (!holds(conversion.read, array))
        return zeros(form.coding.precision, written.extents.points_of(b));
      Reals values = read(parts, part, array);
      if (array == FlowArray{absent} && !is_zero(values)) {
        output.require_writable(planar_obstacle("a third momentum other than 0"));
      }
      return values;
    });
  }
  writer.close();
}

}  // namespace

std::string write_restart(const OutputFile& output, const Parts& parts,
                          const StatedRestartForm& change, const HeaderValues& values) {
  const std::string& path = output.path();
  const auto note = [&](const std::string& text) { print_note(path + " " + text); };
  const RestartForm& first = parts.inputs.front().restart_form();
  output.require_writable(obstacle(values, applied_to(first, change)));
  const SolutionHeader read = combined_header(parts);
  const Conversion conversion = conversion_of(read, change, values);
  const SolutionHeader& written = conversion.written;
  output.require_writable(obstacle(read, written.form));
  output.stream([&] { copy(parts, conversion, output); });
  for (const CaseInput& input : parts.inputs) input.restart().require_form();
  for (const std::string& text : conversion.notes()) note(text);
  if (std::ranges::any_of(parts.inputs, [&](const CaseInput& input) {
        return rounds_text(input.restart().header().form.coding, change.coding,
                           written.form.coding);
      })) {
    note("holds about 7 digits of each variable; --to-precision double keeps more");
  }
  note_contradiction(path, written.form.coding);
  return path + ": " + counted(written.extents) + ", " +
         counted(written.most_variables(), "variable") + ", " + describe(written.form);
}

}  // namespace p3dgrid::tool
