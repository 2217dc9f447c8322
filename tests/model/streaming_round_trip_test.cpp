/// Random solutions, read one variable at a time and put together from one file per variable.

#include <gtest/gtest.h>

#include <cmath>

#include "MOD_P3DReader.hpp"
#include "model/solution.hpp"

namespace model {
namespace {

using namespace mod_p3dgrid;

class StreamingRoundTrip : public test_support::InScratchFolder {};

std::vector<float> read_variable(const Solution& solution, integer variable) {
  const Blocks blocks(solution.extents);
  std::vector<float> values(static_cast<std::size_t>(blocks.total), -77.F);
  readnextp3dvar(variable, "whole", solution.form.iformat, solution.form.dblprec, blocks.count(),
                 blocks.points, array_view<float, 2>(values.data(), 1, blocks.total), blocks.idim,
                 blocks.jdim, blocks.kdim, solution.form.layout, solution.form.multiblock);
  return values;
}

/// Text goes by way of double precision, which does not keep the bits of a NaN.
bool same(const Solution& solution, float read, float written) {
  if (solution.form.text() && std::isnan(written)) return std::isnan(read);
  return bits(read) == bits(solution.stored(written));
}

void expect_variable(const Solution& solution, integer variable, const std::vector<float>& read) {
  for (std::size_t p = 0; p < read.size(); ++p) {
    const auto point = static_cast<std::int64_t>(p);
    if (same(solution, read[p], solution.value(variable, point))) continue;
    RC_LOG() << "variable " << variable << " point " << p << " reads " << read[p] << '\n';
    RC_FAIL("another value");
  }
}

void write_variable(const Solution& solution, integer variable) {
  const Blocks blocks(solution.extents);
  std::vector<float> values;
  for (std::int64_t p = 0; p < blocks.total; ++p) values.push_back(solution.value(variable, p));
  writenextp3dvar(variable, "flow", solution.form.dblprec || solution.form.text(), blocks.count(),
                  blocks.points, array_view<const float, 2>(values.data(), 1, blocks.total),
                  blocks.idim, blocks.jdim, blocks.kdim);
}

void combine(const Solution& solution) {
  const Blocks blocks(solution.extents);
  combinep3dvarfiles(array_view<const float, 2>(solution.triplets.data(), 3, blocks.total),
                     "combined", solution.form.iformat, solution.form.dblprec,
                     solution.parameter_rows, blocks.count(), blocks.idim, blocks.jdim, blocks.kdim,
                     solution.form.layout, solution.form.multiblock);
}

TEST_F(StreamingRoundTrip, EachVariableIsTheOneThatWasWritten) {
  const bool held = rc::check("each variable of a file is read by itself", [] {
    const InEmptyFolder folder;
    const Solution solution = *any_solution();
    set_host(solution);
    write_whole(solution, "whole");
    set_host_for_reading(solution);
    for (const integer variable : solution.variables()) {
      expect_variable(solution, variable, read_variable(solution, variable));
      RC_ASSERT(test_support::count_calls("dispfilereaderror") == 0);
      RC_ASSERT(!test_support::is_open("whole"));
    }
  });
  EXPECT_TRUE(held);
}

/// Text of a signalling NaN: on its way through the double-precision temporary file it has become
/// a quiet one.
void make_nans_quiet(Solution& solution) {
  std::ranges::transform(solution.flow, solution.flow.begin(), through_double);
}

TEST_F(StreamingRoundTrip, CombiningGivesTheFileThatIsWrittenWhole) {
  const bool held = rc::check("files of single variables make the same file", [] {
    const InEmptyFolder folder;
    Solution solution = *any_solution();
    if (solution.form.text()) make_nans_quiet(solution);
    set_host(solution);
    for (integer variable = 1; variable <= solution.rows; ++variable) {
      write_variable(solution, variable);
    }
    combine(solution);
    RC_ASSERT(test_support::count_calls("dispfilereaderror") == 0);
    set_host(solution);
    write_whole(solution, "whole");
    RC_ASSERT(test_support::read_file("combined") == test_support::read_file("whole"));
    RC_ASSERT(!test_support::exists("flow000001.tmp"));
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace model
