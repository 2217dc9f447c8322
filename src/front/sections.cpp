#include <algorithm>

#include "front/header.hpp"

namespace p3dgrid {
namespace {

constexpr Section leading_section{1, solution_variables};

/// Whether a PLOT3D solution gets only the first five variables of an OVERFLOW solution.
bool drops_variables(const SolutionHeader& read, const LayoutTraits& written) {
  return traits_of(read.form.layout).more_parameters && !written.more_parameters &&
         written.parameters > 0;
}

/// The sections of a solution that is written in another layout.
Sections sections_to_write(const SolutionHeader& read, const LayoutTraits& written) {
  const std::int32_t variables = read.most_variables();
  const Sections kept = read.form.sections.value_or(Sections{{1, variables}});
  const bool same = read.form.layout == written.layout;
  if (drops_variables(read, written)) return {leading_section};
  if (same && written.extensions) return kept;
  if (written.counted_variables && !same) return {{1, variables}};
  const std::int32_t held = variables_in(kept);
  Sections sections = kept;
  if (written.triplets && kept.front() != leading_section) {
    sections = {leading_section};
    if (variables > solution_variables) sections.push_back({solution_variables + 1, variables});
  } else if (variables > held) {
    sections.push_back({held + 1, variables});
  }
  return sections;
}

}  // namespace

void require_sections(const std::string& path, const Sections& sections, bool leading) {
  const bool valid = !sections.empty() && std::ranges::all_of(sections, [](const Section& s) {
    return s.first >= 1 && s.last <= most_variables;
  });
  if (valid && (!leading || sections.front() == leading_section)) return;
  refuse(path, "the sections " + describe(sections),
         leading ? "sections that begin with 1-5" : "variables from 1 on");
}

void require_files_of(const std::string& path, const RestartForm& form) {
  if (has_files_of(traits_of(form.layout), form.coding)) return;
  fail(ErrorKind::unsupported, path, no_files_of(traits_of(form.layout), form.coding));
}

Section variables_of(const SolutionHeader& header, std::size_t block, const Section& section) {
  const LayoutTraits& layout = traits_of(header.form.layout);
  const bool counted = layout.counted_variables && header.form.sections->size() == 1;
  return counted ? Section{1, header.variables[block]} : section;
}

Sections extensions_in(const std::vector<std::int32_t>& flags) {
  Sections extensions;
  for (std::size_t n = 0; n < flags.size() && flags[n] != end_of_extensions; ++n) {
    const Extension* const extension = extension_of(flags[n], static_cast<std::int32_t>(n + 1));
    if (extension != nullptr) extensions.push_back(extension->variables);
  }
  return extensions;
}

std::int32_t SolutionHeader::most_variables() const {
  return variables.empty() ? 0 : std::ranges::max(variables);
}

Sections SolutionHeader::missing() const {
  Sections held = form.sections.value_or(Sections());
  const Sections extensions = extensions_in(flags);
  held.insert(held.end(), extensions.begin(), extensions.end());
  std::ranges::sort(held, {}, &Section::first);
  Sections gaps;
  std::int32_t last = 0;
  for (const Section& section : held) {
    if (section.first > last + 1) gaps.push_back({last + 1, section.first - 1});
    last = std::max(last, section.last);
  }
  return gaps;
}

SolutionHeader header_to_write(const SolutionHeader& read, const StatedRestartForm& stated) {
  SolutionHeader header = read;
  header.form = applied_to(read.form, stated);
  const bool stays_text = is_text(read.form.coding) && is_text(header.form.coding);
  if (stays_text && !stated.coding.precision) {
    header.form.coding.precision = Precision::double_precision;
  }
  if (!stated.multiblock) {
    header.form.multiblock = header.form.multiblock || read.extents.blocks() > 1;
  }
  const LayoutTraits& layout = traits_of(header.form.layout);
  if (!layout.extensions || !traits_of(read.form.layout).extensions) header.flags.clear();
  if (stated.sections) return header;
  header.form.sections = sections_to_write(read, layout);
  if (drops_variables(read, layout)) {
    header.variables.assign(header.variables.size(), solution_variables);
  }
  return header;
}

}  // namespace p3dgrid
