/// Random grids and solutions, written by the front in every form and read again.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

#include "model/front_generators.hpp"
#include "p3dgrid/layout.hpp"
#include "p3dgrid/solution.hpp"

namespace model {
namespace {

using p3dgrid::Coding;
using p3dgrid::Layout;
using p3dgrid::Precision;
using p3dgrid::Reals;

class FrontRoundTrip : public test_support::InScratchFolder {};

/// Whether values that went through a file are those that were written: to the bit, or rounded to
/// the precision of the file. Text keeps the precision in memory, of a single that is no number
/// only that.
bool survived(const Coding& coding, const Reals& written, const Reals& read) {
  const bool text = is_text(coding);
  const Precision kept = text ? written.precision() : coding.precision;
  const Precision expected = text ? Precision::double_precision : coding.precision;
  if (read.precision() != expected) return false;
  if (kept == Precision::single_precision) {
    return bits_as<float>(read, text) == bits_as<float>(written, text);
  }
  return bits_as<double>(read) == bits_as<double>(written);
}

bool survived(const Coding& coding, const std::vector<Reals>& written,
              const std::vector<Reals>& read) {
  return std::ranges::equal(written, read, [&](const Reals& before, const Reals& after) {
    return survived(coding, before, after);
  });
}

void check_grid() {
  const InEmptyFolder folder;
  const p3dgrid::GridForm form = any_grid_form();
  const p3dgrid::Grid grid = any_grid(form);
  p3dgrid::write_grid("grid", grid, stated_as(form));
  const p3dgrid::Grid read = p3dgrid::read_grid("grid", stated_as(form));
  RC_ASSERT(read.form == form);
  RC_ASSERT(read.extents() == grid.extents());
  for (std::size_t b = 0; b < grid.blocks.size(); ++b) {
    const p3dgrid::Block& before = grid.blocks[b];
    const p3dgrid::Block& after = read.blocks[b];
    RC_ASSERT(survived(form.coding, {before.x, before.y, before.z}, {after.x, after.y, after.z}));
    RC_ASSERT(after.iblank == before.iblank);
  }
}

/// A form that can be written and read. Layout 100 in single-precision records is read without the
/// triplets with which it is written.
p3dgrid::RestartForm any_front_form() {
  p3dgrid::RestartForm form;
  form.coding = *any_coding().as("coding");
  form.layout = *rc::gen::element(Layout::time_step, Layout::solution, Layout::function,
                                  Layout::triplets, Layout::single_block, Layout::bare)
                     .as("layout");
  const auto& layout = traits_of(form.layout);
  if (!has_files_of(layout, form.coding)) form.coding.dimensions = p3dgrid::Dimensions::three;
  if (form.layout == Layout::triplets && holds_singles(form.coding)) {
    form.coding.precision = Precision::double_precision;
  }
  form.multiblock = !layout.may_hold_count() || *rc::gen::arbitrary<bool>().as("block count");
  const bool two = *rc::gen::arbitrary<bool>().as("two sections");
  form.sections = two ? p3dgrid::Sections{{1, 5}, {6, 7}} : p3dgrid::Sections{{1, 5}};
  return form;
}

p3dgrid::SolutionBlock any_block(const p3dgrid::RestartForm& form, Precision memory,
                                 const p3dgrid::BlockExtents& extents, int variables) {
  const auto& layout = traits_of(form.layout);
  p3dgrid::SolutionBlock block{.extents = extents};
  const std::int64_t points = extents.points();
  const std::int32_t absent = absent_variable(layout, form.coding);
  for (int v = 1; v <= variables; ++v) {
    block.variables.push_back(v == absent ? zeros(memory, points)
                                          : any_front_reals(memory, points));
  }
  for (int n = 0; layout.triplets && n < 3; ++n) {
    block.triplets.push_back(any_front_reals(memory, points));
  }
  any_front_reals(memory, layout.parameters).visit([&](auto values) {
    block.parameters.assign(values.begin(), values.end());
  });
  return block;
}

Reals reals_of(const std::vector<double>& values, Precision precision) {
  Reals reals(precision, std::ssize(values));
  reals.visit([&](auto to) {
    std::ranges::transform(values, to.begin(), [](double value) {
      return static_cast<typename decltype(to)::value_type>(value);
    });
  });
  return reals;
}

void check_solution() {
  const InEmptyFolder folder;
  const auto form = any_front_form();
  const auto memory = *any_precision().as("precision in memory");
  const auto& layout = traits_of(form.layout);
  p3dgrid::Solution flow{.form = form};
  if (layout.holds_step()) flow.run = {.nstep = *rc::gen::arbitrary<std::int32_t>(), .dtau = 0.25};
  int variables = p3dgrid::variables_in(*form.sections);
  if (layout.extensions) {
    const bool more = *rc::gen::arbitrary<bool>().as("extension");
    flow.flags = more ? std::vector<std::int32_t>{41, 999} : std::vector<std::int32_t>{999};
    if (more) variables = 8;
  }
  p3dgrid::Grid grid;
  const bool one_block = layout.one_block || !form.multiblock || form.layout == Layout::bare;
  for (const auto& extents : any_extents(form.coding, one_block)) {
    grid.blocks.emplace_back().extents = extents;
    flow.blocks.push_back(any_block(form, memory, extents, variables));
  }
  p3dgrid::write_solution("flow", flow, stated_as(form));
  const p3dgrid::Solution read =
      p3dgrid::read_solution("flow", {.form = stated_as(form), .grid = &grid});
  RC_ASSERT(read.run.nstep == flow.run.nstep);
  RC_ASSERT(read.run.dtau == flow.run.dtau);
  RC_ASSERT(read.flags == flow.flags);
  RC_ASSERT(read.blocks.size() == flow.blocks.size());
  for (std::size_t b = 0; b < flow.blocks.size(); ++b) {
    const p3dgrid::SolutionBlock& before = flow.blocks[b];
    const p3dgrid::SolutionBlock& after = read.blocks[b];
    RC_ASSERT(after.extents == before.extents);
    RC_ASSERT(survived(form.coding, before.variables, after.variables));
    RC_ASSERT(survived(form.coding, before.triplets, after.triplets));
    const Precision in_file =
        is_text(form.coding) ? Precision::double_precision : form.coding.precision;
    RC_ASSERT(survived(form.coding, reals_of(before.parameters, memory),
                       reals_of(after.parameters, in_file)));
  }
}

TEST_F(FrontRoundTrip, GridsKeepWhatTheirFileHolds) {
  EXPECT_TRUE(rc::check("a grid goes through a file", check_grid));
}

TEST_F(FrontRoundTrip, SolutionsKeepWhatTheirFileHolds) {
  EXPECT_TRUE(rc::check("a solution goes through a file", check_solution));
}

}  // namespace
}  // namespace model
