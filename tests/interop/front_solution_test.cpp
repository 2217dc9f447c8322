/// Solutions exchanged between the front and a Fortran program, both ways, to the last bit of the
/// precision of the file.

#include <gtest/gtest.h>

#include <algorithm>

#include "p3dgrid/solution.hpp"
#include "support/file_bytes.hpp"
#include "support/fortran_restart.hpp"
#include "support/restart_exchanges.hpp"
#include "support/solution.hpp"

namespace interop {
namespace {

using p3dgrid::MarkerBytes;
using p3dgrid::Precision;

p3dgrid::RestartForm form_of(const RestartForm& form, MarkerBytes markers) {
  p3dgrid::RestartForm result{
      .layout = static_cast<p3dgrid::Layout>(form.layout),
      .coding = {.encoding = static_cast<p3dgrid::Encoding>(form.encoding),
                 .precision =
                     form.is_double ? Precision::double_precision : Precision::single_precision,
                 .marker_bytes = markers,
                 .dimensions = form.planar ? p3dgrid::Dimensions::two : p3dgrid::Dimensions::three},
      .multiblock = form.multiblock,
      .sections = p3dgrid::Sections()};
  for (const auto& [first, last] : form.sections) result.sections->push_back({first, last});
  return result;
}

p3dgrid::Grid grid_of(const std::vector<Extents>& extents) {
  p3dgrid::Grid grid;
  for (const Extents& block : extents) {
    grid.blocks.emplace_back().extents = {block[0], block[1], block[2]};
  }
  return grid;
}

/// Copies an array of a block to its part of a column, if the solution has it.
void take(const p3dgrid::Reals& reals, std::size_t first, std::vector<double>& column) {
  reals.visit([&](auto values) {
    std::ranges::copy(values, column.begin() + static_cast<std::ptrdiff_t>(first));
  });
}

p3dgrid::Reals part_of(const std::vector<double>& column, std::size_t first, std::size_t points,
                       Precision precision) {
  p3dgrid::Reals reals(precision, static_cast<std::int64_t>(points));
  reals.visit([&](auto values) {
    using Real = typename decltype(values)::value_type;
    for (std::size_t p = 0; p < points; ++p) values[p] = static_cast<Real>(column[first + p]);
  });
  return reals;
}

Solution from_front(const p3dgrid::Solution& read, std::size_t variables) {
  std::vector<Extents> extents;
  for (const auto& block : read.blocks) {
    extents.push_back({block.extents.i, block.extents.j, block.extents.k});
  }
  Solution result = empty_solution(extents, variables);
  const p3dgrid::RunData& run = read.run;
  result.version = {run.fileversion, run.eqid};
  result.run = {run.talnvar, run.itimeint, run.ibeta};
  result.nstep = run.nstep;
  result.model = run.isgsmodel;
  result.dtau = run.dtau;
  result.talven = {run.talre,  run.talxm1, run.talalfa, run.talbeta,
                   run.talgam, run.tals1,  run.talpr,   run.talprt};
  std::ranges::copy(read.flags, result.flags.begin());
  std::size_t first = 0;
  for (std::size_t b = 0; b < read.blocks.size(); ++b) {
    const p3dgrid::SolutionBlock& block = read.blocks[b];
    EXPECT_LE(block.variables.size(), variables);
    for (std::size_t v = 0; v < block.variables.size(); ++v) {
      take(block.variables[v], first, result.flow[v]);
    }
    for (std::size_t c = 0; c < block.triplets.size(); ++c) {
      take(block.triplets[c], first, result.triplets[c]);
    }
    std::ranges::copy(block.parameters, result.parameters[b].begin());
    if (read.form.layout == p3dgrid::Layout::function) {
      result.counts[b] = static_cast<std::int32_t>(block.variables.size());
    }
    first += points_of(extents[b]);
  }
  return result;
}

p3dgrid::Solution for_front(const Solution& solution, const p3dgrid::RestartForm& form) {
  p3dgrid::Solution result{.form = form, .run = {.nstep = solution.nstep, .dtau = solution.dtau}};
  if (form.layout == p3dgrid::Layout::single_block) {
    for (const std::int32_t flag : solution.flags) {
      result.flags.push_back(flag);
      if (flag == 999) break;
    }
  }
  std::size_t first = 0;
  for (std::size_t b = 0; b < solution.extents.size(); ++b) {
    const Extents& extents = solution.extents[b];
    const std::size_t points = points_of(extents);
    p3dgrid::SolutionBlock& block = result.blocks.emplace_back();
    block.extents = {extents[0], extents[1], extents[2]};
    block.parameters.assign(solution.parameters[b].begin(), solution.parameters[b].end());
    const auto parts = [&](const Columns& columns, std::size_t count) {
      std::vector<p3dgrid::Reals> all;
      for (std::size_t n = 0; n < count; ++n) {
        all.push_back(part_of(columns[n], first, points, form.coding.precision));
      }
      return all;
    };
    const bool counted = form.layout == p3dgrid::Layout::function;
    block.variables = parts(solution.flow, counted ? static_cast<std::size_t>(solution.counts[b])
                                                   : solution.flow.size());
    block.triplets = parts(solution.triplets, solution.triplets.size());
    first += points;
  }
  return result;
}

class FrontSolution : public testing::TestWithParam<Exchange> {
 protected:
  /// The variable counts of function files are those of the sections.
  FrontSolution() {
    std::int32_t variables = 0;
    for (const auto& [first, last] : form.sections) variables += last - first + 1;
    std::ranges::fill(solution.counts, variables);
  }

  RestartForm form = GetParam().form;
  Solution solution = GetParam().solution();
};

class FrontSolutionRead : public FrontSolution {};
INSTANTIATE_TEST_SUITE_P(Front, FrontSolutionRead, testing::ValuesIn(readable_exchanges()),
                         exchange_name);

/// What the front must get: what Fortran wrote, without the older time levels, which are skipped.
/// In text of single precision the decimals count, which the other side reads in double precision.
Solution expected_of(const FortranRestart& fortran, RestartForm form, const Solution& solution) {
  Solution expected = solution;
  if (form.is_text()) {
    form.is_double = true;
    expected = fortran.read(fortran.file(), form, solution.extents);
  }
  expected = as_held(form, expected);
  expected.older = empty_solution(solution.extents, solution.flow.size()).older;
  return expected;
}

TEST_P(FrontSolutionRead, HasTheBitsThatFortranWrote) {
  const FortranRestart fortran(RESTART_PEER);
  fortran.write(form, solution);
  const p3dgrid::Grid grid = grid_of(solution.extents);
  const p3dgrid::Solution read = p3dgrid::read_solution(
      fortran.file(), {.form = stated_as(form_of(form, MarkerBytes::four)), .grid = &grid});
  expect_same_bits(from_front(read, solution.flow.size()), expected_of(fortran, form, solution));
}

/// The flow parameters in the precision of the solution. In text they have the digits for it, and
/// the other side always reads doubles.
Solution as_parsed(const RestartForm& form, Solution solution) {
  if (form.is_double) return solution;
  for (auto& block : solution.parameters) {
    for (double& value : block) value = static_cast<double>(static_cast<float>(value));
  }
  return solution;
}

class FrontSolutionWritten : public FrontSolution {};
INSTANTIATE_TEST_SUITE_P(Front, FrontSolutionWritten,
                         testing::ValuesIn(writable_exchanges({0, 1, 2})), exchange_name);

TEST_P(FrontSolutionWritten, IsReadByFortranToTheLastBit) {
  const FortranRestart fortran(RESTART_PEER);
  const auto written = form_of(form, MarkerBytes::four);
  const Solution held = as_held(form, solution);
  p3dgrid::write_solution(fortran.file(), for_front(held, written), stated_as(written));
  expect_same_bits(as_parsed(form, fortran.read(fortran.file(), form, solution.extents)),
                   as_parsed(form, held));
}

class FrontSolutionBytes : public FrontSolution {};
INSTANTIATE_TEST_SUITE_P(Front, FrontSolutionBytes, testing::ValuesIn(writable_exchanges({0, 2})),
                         exchange_name);

TEST_P(FrontSolutionBytes, AreThoseOfFortransFile) {
  for (const bool wide : {false, true}) {
    const FortranRestart fortran(wide ? RESTART_PEER_WIDE : RESTART_PEER);
    fortran.write(form, solution);
    const std::string expected = bytes_of(fortran.file());
    ASSERT_FALSE(expected.empty());
    const auto written = form_of(form, wide ? MarkerBytes::eight : MarkerBytes::four);
    p3dgrid::write_solution(fortran.file(), for_front(as_held(form, solution), written),
                            stated_as(written));
    EXPECT_TRUE(bytes_of(fortran.file()) == expected) << (wide ? "8" : "4") << "-byte markers";
  }
}

}  // namespace
}  // namespace interop
