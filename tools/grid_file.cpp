#include "grid_file.hpp"

#include "console.hpp"
#include "failure.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {

template <class Action>
auto GridInput::advised(const Action& action) const {
  return with_advice([&] { return with_failures(path_, action); },
                     [&] { return advice(path_, stated_as(found_.grid())); });
}

GridInput::GridInput(const std::string& path, const Found& found)
    : path_(path),
      found_(found),
      reader_(advised([&] { return GridReader(path, found.reading); })) {}

Block GridInput::read(std::size_t block, const IndexRange& range) {
  return advised([&] { return reader_.read(static_cast<std::int32_t>(block), range); });
}

std::vector<BlockIndex> GridInput::index() {
  std::vector<BlockIndex> blocks;
  advised([&] {
    for (std::int32_t b = 0; b < extents().blocks(); ++b) blocks.push_back(reader_.locate(b));
  });
  return blocks;
}

void GridInput::require_form() const {
  if (found_.reading.fit.whole() && !found_.stated) return;
  const GridForm& form = found_.grid();
  const Fit fit = fit_of(path_, form);
  if (fit.whole()) return;
  if (only_followed(fit, form.coding.encoding)) {
    return print_note(path_ + ": " + fit.what + ", and are left out");
  }
  GridForm with_blanking = form;
  with_blanking.iblank = true;
  if (form.coding.encoding == Encoding::unformatted && fit_of(path_, with_blanking).whole()) {
    print_note(path_ + ": holds blanking values, which are left out; --grid-iblank yes reads them");
    return;
  }
  const std::string help = advice(path_, stated_as(form));
  throw Mismatch(path_ + ": is not " + describe(form) + ": " + fit.what,
                 help.empty() ? "" : "; " + help);
}

Grid read_grid(const std::string& path, const Found& found) {
  GridInput input(path, found);
  Grid grid{.form = found.grid()};
  for (std::size_t b = 0; b < input.extents().i.size(); ++b) grid.blocks.push_back(input.read(b));
  input.require_form();
  return grid;
}

void write_grid(const std::string& path, const GridForm& form, const Grid& grid) {
  const std::int64_t points = grid.extents().points();
  expect_values(form.coding, axes_of(form.coding) * points, form.iblank ? points : 0);
  p3dgrid::write_grid(path, grid, stated_as(form));
}

}  // namespace p3dgrid::tool
