#include "restart_file.hpp"

#include <filesystem>

#include "console.hpp"
#include "failure.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

/// The reading with the extents of the grid if the file has none.
Reading with_extents(const Found& found, const std::optional<Extents>& grid) {
  Reading reading = found.reading;
  if (!reading.extents && grid) reading.extents = std::make_shared<const Extents>(*grid);
  return reading;
}

}  // namespace

template <class Action>
auto RestartInput::advised(const Action& action) const {
  return with_advice([&] { return with_failures(path_, action); },
                     [&] { return advice(path_, stated_as(found_.restart()), grid_); });
}

RestartInput::RestartInput(const std::string& path, const Found& found,
                           const std::optional<Extents>& grid)
    : path_(path),
      found_(found),
      grid_(grid),
      reader_(advised([&] { return SolutionReader(path, with_extents(found, grid)); })) {}

std::vector<double> RestartInput::parameters(std::size_t block) {
  return advised([&] { return reader_.parameters(static_cast<std::int32_t>(block)); });
}

SolutionBlock RestartInput::read(std::size_t block) {
  return advised([&] { return reader_.read(static_cast<std::int32_t>(block)); });
}

Reals RestartInput::read(std::size_t block, const FlowArray& array, const IndexRange& range) {
  return advised([&] { return reader_.read(static_cast<std::int32_t>(block), array, range); });
}

std::vector<BlockIndex> RestartInput::index() {
  std::vector<BlockIndex> blocks;
  advised([&] {
    for (std::int32_t b = 0; b < header().blocks; ++b) blocks.push_back(reader_.locate(b));
  });
  return blocks;
}

void RestartInput::require_form() const {
  const Reading& reading = found_.reading;
  if (!found_.stated && reading.checked && reading.fit.whole()) return;
  const RestartForm& form = header().form;
  const Fit fit = fit_of(path_, form, header().extents, header().triplets);
  if (fit.whole()) return;
  const std::string sections = describe(*form.sections);
  if (only_followed(fit, form.coding.encoding)) {
    const bool records = fit.agreement == Fit::Agreement::longer;
    return print_note(path_ + ": " + fit.what + ", and are left out" +
                      (records ? "; --sections may be longer than " + sections : ""));
  }
  const std::string help = advice(path_, stated_as(found_.restart()), grid_);
  throw Mismatch(
      path_ + ": is not " + describe(form) + " with the sections " + sections + ": " + fit.what,
      help.empty() ? "" : "; " + help);
}

Sections all_sections(const SolutionHeader& header) {
  Sections sections = header.form.sections.value_or(Sections());
  const std::int32_t in_blocks = variables_in(sections);
  if (header.most_variables() > in_blocks) {
    sections.push_back({in_blocks + 1, header.most_variables()});
  }
  return sections;
}

Solution read_restart(const std::string& path, const Found& found,
                      const std::optional<Extents>& grid) {
  RestartInput input(path, found, grid);
  const SolutionHeader& header = input.header();
  Solution solution{.form = header.form, .run = header.run, .flags = header.flags};
  for (std::size_t b = 0; b < header.extents.i.size(); ++b)
    solution.blocks.push_back(input.read(b));
  input.require_form();
  return solution;
}

void write_restart(const std::string& path, const RestartForm& form, const Solution& solution) {
  const StatedRestartForm stated = stated_as(form);
  expect_arrays(header_to_write(solution, stated));
  write_solution(path, solution, stated);
}

void expect_arrays(const SolutionHeader& header) {
  std::int64_t values = 0;
  for (std::size_t b = 0; b < header.extents.i.size(); ++b) {
    const std::int64_t triplets = traits_of(header.form.layout).triplets ? triplet : 0;
    values += (header.variables[b] + triplets) * header.extents.points_of(b);
  }
  expect_values(header.form.coding, values);
}

void require_regular_file(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  // Opening reports folders and missing files.
  if (!std::filesystem::is_other(status)) return;
  throw Unusable(path + ": is not a regular file; restart files are read more than once");
}

}  // namespace p3dgrid::tool
