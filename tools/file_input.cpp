#include "file_input.hpp"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "console.hpp"
#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

/// The reading with the extents of the grid if the file has none.
Reading with_extents(const Found& found) {
  Reading reading = found.reading;
  if (reading.extents == nullptr) reading.extents = found.grid_extents;
  return reading;
}

/// What the file has been read as.
Reading reading_of(const GridReader& reader) {
  return reader.reading();
}
Reading reading_of(const SolutionReader& reader) {
  const SolutionHeader& header = reader.header();
  return {.form = header.form,
          .extents = std::make_shared<const Extents>(header.extents),
          .triplets = header.triplets};
}

std::int32_t blocks_of(const GridReader& reader) {
  return reader.extents().blocks();
}
std::int32_t blocks_of(const SolutionReader& reader) {
  return reader.header().blocks;
}

std::string text_of(const Reading& reading) {
  if (reading.is_grid()) return describe(reading.grid());
  const RestartForm& form = reading.restart();
  return describe(form) + " with the sections " + describe(*form.sections);
}

/// The note on a file that can be read as it is although it is longer than its form; empty for
/// others.
std::string note_on(const std::string& path, const Reading& reading, const Fit& fit) {
  if (only_followed(fit, reading.coding().encoding)) {
    const bool records = !reading.is_grid() && fit.agreement == Fit::Agreement::longer;
    return fit.what + ", and are left out" +
           (records ? "; --sections may be longer than " + describe(*reading.restart().sections)
                    : "");
  }
  if (!reading.is_grid() || reading.coding().encoding != Encoding::unformatted) return "";
  GridForm with_blanking = reading.grid();
  with_blanking.iblank = true;
  if (!fit_of(path, {.form = with_blanking}).whole()) return "";
  return "holds blanking values, which are left out; --grid-iblank yes reads them";
}

}  // namespace

template <class Reader>
template <class Action>
auto FileInput<Reader>::advised(const Action& action) const {
  try {
    return with_failures(path_, action);
  } catch (const Mismatch& failure) {
    const std::string help = advice(path_, found_);
    if (help.empty()) throw;
    throw Mismatch(failure.what(), "; " + help);
  }
}

template <class Reader>
FileInput<Reader>::FileInput(const std::string& path, const Found& found)
    : path_(path),
      found_(found),
      reader_(advised([&] { return Reader(path, with_extents(found)); })) {}

template <class Reader>
std::vector<BlockIndex> FileInput<Reader>::index() {
  std::vector<BlockIndex> blocks;
  advised([&] {
    for (std::int32_t b = 0; b < blocks_of(reader_); ++b) blocks.push_back(reader_.locate(b));
  });
  return blocks;
}

template <class Reader>
void FileInput<Reader>::require_form() {
  const Reading& found = found_.reading;
  if (std::exchange(compared_, true)) return;
  if (!found_.stated && found.checked && found.fit.whole()) return;
  const Reading reading = reading_of(reader_);
  const Fit fit = fit_of(path_, reading);
  if (fit.whole()) return;
  if (const std::string note = note_on(path_, reading, fit); !note.empty()) {
    return print_note(path_ + ": " + note);
  }
  const std::string help = advice(path_, found_);
  throw Mismatch(path_ + ": is not " + text_of(reading) + ": " + fit.what,
                 help.empty() ? "" : "; " + help);
}

template class FileInput<GridReader>;
template class FileInput<SolutionReader>;

Block GridInput::read(std::size_t block, const IndexRange& range) {
  return advised([&] { return reader().read(static_cast<std::int32_t>(block), range); });
}

std::vector<double> RestartInput::parameters(std::size_t block) {
  return advised([&] { return reader().parameters(static_cast<std::int32_t>(block)); });
}

SolutionBlock RestartInput::read(std::size_t block) {
  return advised([&] { return reader().read(static_cast<std::int32_t>(block)); });
}

Reals RestartInput::read(std::size_t block, const FlowArray& array, const IndexRange& range) {
  return advised([&] { return reader().read(static_cast<std::int32_t>(block), array, range); });
}

bool holds(const SolutionHeader& header, const FlowArray& array) {
  if (array.triplet) return header.triplets;
  return array.number <= header.most_variables() &&
         std::ranges::none_of(header.missing(), [&](const Section& gap) {
           return gap.first <= array.number && array.number <= gap.last;
         });
}

Sections all_sections(const SolutionHeader& header) {
  Sections sections = header.form.sections.value_or(Sections());
  const std::int32_t in_blocks = variables_in(sections);
  if (header.most_variables() > in_blocks) {
    sections.push_back({in_blocks + 1, header.most_variables()});
  }
  return sections;
}

void require_regular_file(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  // Opening reports folders and missing files.
  if (!std::filesystem::is_other(status)) return;
  throw Unusable(path + ": is not a regular file; restart files are read more than once");
}

}  // namespace p3dgrid::tool
