/// Restart files exchanged with a Fortran program, both ways, bit for bit, in every layout. The two
/// sides agree on the values through files of bit patterns.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "MOD_P3DReader.hpp"
#include "support/file_bytes.hpp"
#include "support/fortran_restart.hpp"
#include "support/library_restart.hpp"
#include "support/restart_exchanges.hpp"
#include "support/scratch_directory.hpp"
#include "support/solution.hpp"

namespace interop {
namespace {

class RestartExchange : public testing::TestWithParam<Exchange> {
 protected:
  RestartForm form = GetParam().form;
  Solution solution = GetParam().solution();
  FortranRestart fortran{RESTART_PEER};
};

/// What the library must get from the file that the Fortran side has written. In text the file
/// holds decimals: what counts is what the other side reads from them in single precision.
Solution expected_of(const FortranRestart& fortran, const RestartForm& form,
                     const Solution& solution) {
  if (!form.is_text() || !form.is_double) return as_delivered(form, as_held(form, solution));
  return as_delivered(form, fortran.read(fortran.file(), form.as_single(), solution.extents));
}

/// The module's variables beyond those that are part of the solution.
void expect_module_variables(const RestartForm& form, const Solution& solution) {
  using namespace mod_p3dgrid;
  EXPECT_EQ(sqvar.allocated(), form.layout == 2 && !form.has_double_header());
  EXPECT_EQ(dqvar.allocated(), form.layout == 2 && form.has_double_header());
  EXPECT_EQ(nfvar.allocated(), form.layout == 3);
  const bool in_records = form.layout == 2 && !form.is_text();
  const std::array<double, 4> expected =
      in_records ? solution.parameters.back() : std::array<double, 4>{};
  EXPECT_EQ((std::array<double, 4>{p3dxm1, p3dalfa, p3dre, p3dtau}), expected);
}

/// Variables per point: those of the sections and extensions, or as the header has it.
std::int64_t expected_rows(const RestartForm& form, const Solution& solution) {
  return form.layout == 3 ? *std::ranges::max_element(solution.counts) : form.highest_variable();
}

/// The header reader finds the extents where the layout has kept ones.
void expect_extents_in_header(const FortranRestart& fortran, const RestartForm& form,
                              const Solution& solution) {
  std::vector<Extents> expected = solution.extents;
  if (form.has_triplets() || form.layout == 102) expected.assign(expected.size(), {0, 0, 0});
  EXPECT_EQ(read_restart_extents_with_library(fortran.file(), form), expected);
}

class ReadByLibrary : public RestartExchange {};
INSTANTIATE_TEST_SUITE_P(Restart, ReadByLibrary, testing::ValuesIn(readable_exchanges()),
                         exchange_name);

TEST_P(ReadByLibrary, HasTheBitsThatFortranWrote) {
  fortran.write(form, solution);
  const auto result = read_restart_with_library(fortran.file(), form, solution.extents);
  ASSERT_TRUE(result.has_value()) << mod_p3dgrid::p3dlastfailure().describe();
  expect_same_bits(result->solution, expected_of(fortran, form, solution));
  expect_module_variables(form, solution);
  EXPECT_EQ(result->rows, expected_rows(form, solution));
  EXPECT_EQ(result->points, static_cast<std::int64_t>(solution.points()));
  const bool allocates_twice = form.layout == 101 && form.is_double && !form.is_text();
  EXPECT_EQ(result->repeated_allocations, allocates_twice ? 1 : 0);
  expect_extents_in_header(fortran, form, solution);
}

class ReadByFortran : public RestartExchange {};
INSTANTIATE_TEST_SUITE_P(Restart, ReadByFortran, testing::ValuesIn(writable_exchanges({0, 1, 2})),
                         exchange_name);

TEST_P(ReadByFortran, HasTheBitsThatTheLibraryWrote) {
  const ScratchDirectory scratch;
  write_restart_with_library(scratch.file("restart"), form, solution);
  const RestartForm read_as = form.is_text() ? form.as_single() : form;
  const Solution result = fortran.read(scratch.file("restart"), read_as, solution.extents);
  expect_same_bits(result, as_held(form, narrowed(solution)));
}

/// Forms whose bytes leave no choice.
class WrittenByBoth : public RestartExchange {};
INSTANTIATE_TEST_SUITE_P(Restart, WrittenByBoth, testing::ValuesIn(writable_exchanges({0, 2})),
                         exchange_name);

TEST_P(WrittenByBoth, HasTheSameBytes) {
  fortran.write(form, narrowed(solution));
  const ScratchDirectory scratch;
  write_restart_with_library(scratch.file("restart"), form, solution);
  const std::string expected = bytes_of(fortran.file());
  ASSERT_FALSE(expected.empty());
  EXPECT_TRUE(bytes_of(scratch.file("restart")) == expected);
}

/// Layout 100 as its writers make it: a whole read in single precision takes the first record for
/// a section, and so finds the triplets among the variables.
TEST(Layout100InSingleRecords, LeadsWithItsTripletsReadAsVariables) {
  RestartForm form{.layout = 100, .encoding = 2, .is_double = false};
  const Exchange exchange{form, false};
  const Solution solution = exchange.solution();
  const ScratchDirectory scratch;
  write_restart_with_library(scratch.file("restart"), form, solution);
  const auto result = read_restart_with_library(scratch.file("restart"), form, solution.extents);
  ASSERT_TRUE(result.has_value());
  Solution shifted = as_delivered(form, as_held(form, solution));
  shifted.flow = {solution.triplets[0], solution.triplets[1], solution.triplets[2],
                  solution.flow[0], solution.flow[1]};
  expect_same_bits(result->solution, shifted);
}

class OlderLevelsInText : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Restart, OlderLevelsInText, testing::Values(2, 3));

TEST_P(OlderLevelsInText, FailToRead) {
  const FortranRestart fortran(RESTART_PEER);
  const RestartForm form{
      .layout = 0, .encoding = 1, .is_double = false, .time_integration = GetParam()};
  const Exchange exchange{form, true};
  fortran.write(form, exchange.solution());
  EXPECT_FALSE(read_restart_with_library(fortran.file(), form, exchange.extents()).has_value());
  EXPECT_EQ(mod_p3dgrid::p3dlastfailure().expected, "an unformatted record of an older time level");
}

}  // namespace
}  // namespace interop
