#include "front/sections.hpp"

#include <algorithm>

#include "format/body.hpp"
#include "p3dgrid/error.hpp"

namespace p3dgrid {
namespace {

constexpr Section solution{1, solution_variables};

}  // namespace

void require_sections(const std::string& path, const Sections& sections, bool leading) {
  const bool valid = !sections.empty() && std::ranges::all_of(sections, [](const Section& s) {
    return s.first >= 1 && s.last <= most_variables;
  });
  if (valid && (!leading || sections.front() == solution)) return;
  throw Error({.kind = ErrorKind::argument,
               .file = path,
               .found = "the sections " + describe(sections),
               .expected = leading ? "sections that begin with 1-5" : "variables from 1 on"});
}

Sections sections_to_write(const RestartForm& read, const LayoutTraits& written,
                           std::int32_t variables) {
  const Sections kept = read.sections.value_or(Sections{{1, variables}});
  const bool same = read.layout == written.layout;
  if (same && written.extensions) return kept;
  if (written.counted_variables && !same) return {{1, variables}};
  const std::int32_t held = variables_in(kept);
  Sections sections = kept;
  if (written.triplets && kept.front() != solution) {
    sections = {solution};
    if (variables > solution_variables) sections.push_back({solution_variables + 1, variables});
  } else if (variables > held) {
    sections.push_back({held + 1, variables});
  }
  return sections;
}

}  // namespace p3dgrid
