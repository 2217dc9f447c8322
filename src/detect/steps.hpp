#pragma once

#include <string>
#include <vector>

#include "detect/evidence.hpp"

/// The steps of a detection.
namespace p3dgrid {

struct Candidate {
  Reading reading;
  FilePlan plan;
};

/// The possible codings of a file that agree with what is stated.
[[nodiscard]] std::vector<Coding> codings_of(Evidence& file, const StatedCoding& stated);

/// All readings of the file as a grid with a plausible header.
[[nodiscard]] std::vector<Candidate> grid_candidates(Evidence& file, const StatedGridForm& stated,
                                                     EmptyBlocks empty);

/// Size of the module's section table.
inline constexpr std::size_t most_sections = 30;

/// A restart file whose sections are looked for.
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

/// The records of a file in a reading; none if no extents are known or its blocks cannot have the
/// sections. Sections that the reading does not have are the usual ones.
/// @param outline  of the file in that form
[[nodiscard]] std::optional<FilePlan> plan_of(Evidence& file, const Reading& reading,
                                              Outline outline);

/// Compares candidates with the file. All of them are text, or none; text is read once.
[[nodiscard]] std::vector<Reading> fitted(Evidence& file, std::vector<Candidate> candidates);

/// Whether a binary grid without blanking ends with small integers where third coordinates would
/// be. A grid in two dimensions with a block count and blanking values has the length of a block 1
/// x ni x nj in three without them.
[[nodiscard]] bool has_integers_for_coordinates(Evidence& file, const GridForm& form,
                                                const Extents& extents, std::int64_t end);

/// Removes the readings of binary grids that their values contradict.
[[nodiscard]] std::vector<Reading> grid_readings(Evidence& file, const StatedGridForm& stated,
                                                 std::vector<Reading> readings);

/// All readings of the file as a restart file with a plausible header, compared with the file.
/// @param grid    extents of its grid, for layouts that hold none
/// @param others  candidates of another kind, to compare with text in the same pass
[[nodiscard]] std::vector<Reading> restart_readings(Evidence& file, const StatedRestartForm& stated,
                                                    const std::shared_ptr<const Extents>& grid,
                                                    EmptyBlocks empty,
                                                    std::vector<Candidate> others = {});

/// Selects the readings that agree with the file: first those that agree to the last byte, then
/// unformatted ones followed by further records, then those of which only the header could be
/// compared. If there is none, selects those that agree furthest.
/// @param grid  extents of the grid if known; readings with these extents are preferred
[[nodiscard]] Detection select_readings(std::vector<Reading> readings,
                                        const std::shared_ptr<const Extents>& grid);

/// If several readings agree and differ in byte order or precision, takes the one whose reals are
/// plausible, if those of all others are not. A sample of each record is examined.
void settle_by_values(Evidence& file, Detection& found);

/// @name Descriptions of a file that agrees with no reading, as parts of a sentence
/// @{

/// A form of other programs that cannot be read: unformatted files with other records or with
/// 64-bit integers, text with other line ends. Empty for other files.
[[nodiscard]] std::string foreign_form(Evidence& file);

/// Damage in the header: a wrong first marker, a header that ends too early, invalid extents, more
/// blocks than lines of text. Empty if the file does not begin like a grid or solution.
[[nodiscard]] std::string header_damage(Evidence& file);

/// The first line of text, or the first bytes of other files.
[[nodiscard]] std::string beginning_of(Evidence& file);
/// @}

/// The possible values of a choice that may be stated.
template <class Choice>
[[nodiscard]] std::vector<Choice> choices(const std::optional<Choice>& stated,
                                          std::vector<Choice> all) {
  return stated ? std::vector<Choice>{*stated} : all;
}

}  // namespace p3dgrid
