#pragma once

#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Size of the module's section table.
inline constexpr std::size_t most_sections = 30;

struct SectionSearch {
  Evidence& file;
  RestartForm form;
  Outline outline;
  std::shared_ptr<const Extents> extents;
  bool leading;  ///< blocks begin with a leading record

  [[nodiscard]] FilePlan plan(const Sections& sections) const;
};

[[nodiscard]] Sections usual_sections(const SectionSearch& search);

/// Whether the body can have the sections that the form states.
[[nodiscard]] bool can_have_stated_sections(const SectionSearch& search);

/// The tables that agree with the record lengths of the first block of an unformatted file.
[[nodiscard]] std::vector<Sections> sections_in_records(const SectionSearch& search);

/// The tables of one section, after a leading record if there is one, that agree with the size of a
/// file without markers. Text must have been counted by `Evidence::fit`.
[[nodiscard]] std::vector<Sections> sections_by_size(const SectionSearch& search);

}  // namespace p3dgrid
