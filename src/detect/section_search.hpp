#pragma once

#include <vector>

#include "detect/evidence.hpp"

namespace p3dgrid {

/// Size of the module's section table, and largest plausible number of variables.
inline constexpr std::size_t most_sections = 30;
inline constexpr std::int32_t most_variables = 1'000'000;

/// A restart file whose sections are to be found out: its form, its header, and the extents by
/// which its body is taken.
struct SectionSearch {
  Evidence& file;
  const RestartForm& form;
  const Outline& outline;
  std::shared_ptr<const Extents> extents;
  bool leading;  ///< blocks begin with a leading record

  [[nodiscard]] FilePlan plan(const Sections& sections) const;
};

/// The usual sections of a layout.
[[nodiscard]] Sections usual_sections(const SectionSearch& search);

/// Whether the body can have the sections that the form states.
[[nodiscard]] bool can_have_stated_sections(const SectionSearch& search);

/// The tables that agree with the lengths of the records in the first block of an unformatted file.
[[nodiscard]] std::vector<Sections> sections_in_records(const SectionSearch& search);

/// The tables, of one section or of one behind a leading record, that agree with the size of a file
/// without markers. For text, `Evidence::fit` must have counted the values before.
[[nodiscard]] std::vector<Sections> sections_by_size(const SectionSearch& search);

}  // namespace p3dgrid
