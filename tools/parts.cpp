#include "parts.hpp"

#include <algorithm>
#include <utility>

#include "console.hpp"
#include "failure.hpp"
#include "file_names.hpp"
#include "form_options.hpp"
#include "progress.hpp"
#include "table.hpp"

namespace p3dgrid::tool {
namespace {

/// The form of the first input, but in double precision if any input is.
GridForm combined_form(const Parts& parts) {
  GridForm form = parts.inputs.front().form();
  for (const CaseInput& input : parts.inputs) {
    const GridForm& other = input.form();
    if (holds_doubles(other.coding)) form.coding.precision = Precision::double_precision;
    form.iblank = form.iblank || other.iblank;
  }
  form.multiblock = form.multiblock || parts.inputs.size() > 1;
  return form;
}

/// Why the file cannot be written in that form, as part of a sentence; empty if it can.
std::string obstacle(const Parts& parts, const GridForm& form) {
  const Extents extents = parts.extents();
  if (!form.multiblock && extents.blocks() > 1) {
    const CaseInput& input = parts.inputs.front();
    const bool whole = parts.inputs.size() == 1 && input.extents().blocks() == extents.blocks();
    return (whole ? input.path() + " holds " : "there are ") + counted(extents.blocks(), "block") +
           ", and a file without a block count (--to-multiblock no) holds only one";
  }
  return is_planar(form.coding) ? planar_obstacle(extents) : "";
}

Block read(const Parts& parts, const Part& part) {
  Block block = parts.inputs[part.input].grid().read(part.block, part.range);
  if (part.orientation != Orientation{}) block = reorient(std::move(block), part.orientation);
  if (parts.edit_block) parts.edit_block(block);
  return block;
}

/// Returns a summary, one line.
std::string write_grid(const OutputFile& output, const Parts& parts, const StatedGridForm& change) {
  const Extents extents = parts.extents();
  const GridForm form = applied_to(combined_form(parts), change);
  output.require_writable(obstacle(parts, form));
  expect_values(form.coding, axes_of(form.coding) * extents.points(),
                form.iblank ? extents.points() : 0);
  output.stream([&] {
    GridWriter writer(output.temporary_path(), form, extents);
    for (const Part& part : parts.list) {
      const Block block = read(parts, part);
      if (is_planar(form.coding) && !is_zero(block.z)) {
        output.require_writable(planar_obstacle("z other than 0"));
      }
      writer.write(block);
    }
    writer.close();
  });
  for (const CaseInput& input : parts.inputs) input.grid().require_form();
  if (std::ranges::any_of(parts.inputs, [&](const CaseInput& input) {
        return rounds_text(input.form().coding, change.coding, form.coding);
      })) {
    print_note("coordinates are rounded to about 7 digits; --to-precision double keeps more");
  }
  note_contradiction(output.path(), form.coding);
  return output.path() + ": " + counted(extents) + ", " + describe(form);
}

}  // namespace

std::deque<CaseInput> open_cases(const PartOptions& options, const Usage& usage) {
  const std::vector<std::string>& grids = options.grids;
  const std::vector<std::string>& solutions = options.solutions;
  if (options.has_solution() && solutions.size() != grids.size()) {
    throw Unusable("--restart names " + counted(std::ssize(solutions) - 1, "solution") +
                   " and the file to write, and there are " +
                   counted(std::ssize(grids) - 1, "grid"));
  }
  std::deque<CaseInput> inputs;
  for (std::size_t n = 0; n + 1 < grids.size(); ++n) {
    inputs.emplace_back(grids[n], options.has_solution() ? solutions[n] : "", options.stated,
                        usage);
  }
  return inputs;
}

BlockExtents Parts::extents_of(const Part& part) const {
  const BlockExtents whole = inputs[part.input].extents().of(part.block);
  return part.orientation.extents_of(part.range.extents_in(whole));
}

Extents Parts::extents() const {
  Extents extents;
  for (const Part& part : list) extents.add(extents_of(part));
  return extents;
}

std::vector<Part> whole_blocks(const std::deque<CaseInput>& inputs) {
  std::vector<Part> parts;
  for (std::size_t n = 0; n < inputs.size(); ++n) {
    for (std::size_t b = 0; b < inputs[n].extents().i.size(); ++b) parts.push_back({n, b});
  }
  return parts;
}

PartOutput::PartOutput(const PartOptions& options, std::string grid, std::string solution)
    : options_(options) {
  std::vector<std::string> read(options.grids.begin(), options.grids.end() - 1);
  if (options.has_solution()) {
    read.insert(read.end(), options.solutions.begin(), options.solutions.end() - 1);
    if (solution == grid) throw Unusable(grid + ": cannot be both the grid and its solution");
    solution_.emplace(std::move(solution), read);
  }
  grid_.emplace(std::move(grid), read);
}

void PartOutput::write(const Parts& parts) {
  const StatedGridForm& change = options_.change;
  grid_summary_ = write_grid(*grid_, parts, change);
  if (!solution_) return;
  solution_summary_ = write_restart(
      *solution_, parts,
      {.layout = options_.layout, .coding = change.coding, .multiblock = change.multiblock}, {});
}

void PartOutput::commit() {
  grid_->commit();
  print_summary(grid_summary_);
  if (!solution_) return;
  solution_->commit();
  print_summary(solution_summary_);
}

void write_parts(const PartOptions& options, const Usage& usage,
                 const std::function<Parts(std::deque<CaseInput>&)>& parts_of) {
  PartOutput output(options, options.grids.back(), options.solution_output());
  std::deque<CaseInput> inputs = open_cases(options, usage);
  output.write(parts_of(inputs));
  output.commit();
}

}  // namespace p3dgrid::tool
