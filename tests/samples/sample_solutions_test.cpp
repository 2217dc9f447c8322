/// Real solution and function files. The tests skip without a folder of them.

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "MOD_P3DReader.hpp"
#include "samples_folder.hpp"
#include "support/fortran_restart.hpp"
#include "support/library_restart.hpp"

namespace interop {
namespace {

struct SolutionSample {
  const char* name;
  const char* file;
  RestartForm form;
};

const std::vector<Extents> multi{{8, 12, 12}, {8, 12, 12}};
const std::vector<Extents> bluntfin{{40, 32, 32}};

std::vector<SolutionSample> solution_samples() {
  return {
      {"unformatted_double", "vtk_data/multi-bin.q", {2, 0, true}},
      {"binary_double", "vtk_data/multi-bin-C.q", {2, 2, true}},
      {"text", "vtk_data/multi-ascii.q", {2, 1, false}},
  };
}

std::vector<SolutionSample> readable_samples() {
  std::vector<SolutionSample> all = solution_samples();
  all.push_back({"functions", "vtk_data/multi-bin.f", {3, 0, true, true, {{1, 2}}}});
  return all;
}

using ReadableSolution = SampleFileTest<SolutionSample>;
INSTANTIATE_TEST_SUITE_P(Solutions, ReadableSolution, testing::ValuesIn(readable_samples()),
                         sample_name<SolutionSample>);

TEST_P(ReadableSolution, IsReadToTheBitsThatFortranReads) {
  if (std::string(RESTART_PEER).empty()) GTEST_SKIP() << "no Fortran compiler";
  const RestartForm& form = GetParam().form;
  const auto result = read_restart_with_library(path(), form, multi);
  ASSERT_TRUE(result.has_value()) << mod_p3dgrid::p3dlastfailure().describe();
  EXPECT_EQ(result->rows, form.highest_variable());
  const FortranRestart fortran(RESTART_PEER);
  expect_same_bits(result->solution, narrowed(fortran.read(path(), form, multi)));
}

TEST_P(ReadableSolution, HasTheExtentsPublished) {
  EXPECT_EQ(read_restart_extents_with_library(path(), GetParam().form), multi);
}

/// The three solution files hold one solution, as text with six decimals.
using SameSolution = SampleFileTest<SolutionSample>;
INSTANTIATE_TEST_SUITE_P(Solutions, SameSolution, testing::ValuesIn(solution_samples()),
                         sample_name<SolutionSample>);

TEST_P(SameSolution, HasTheParametersPublished) {
  const auto result = read_restart_with_library(path(), GetParam().form, multi);
  ASSERT_TRUE(result.has_value()) << mod_p3dgrid::p3dlastfailure().describe();
  constexpr std::array<double, 4> published{2.95, 0, 2.1e6, 1.3911};
  for (const auto& parameters : result->solution.parameters) {
    for (std::size_t m = 0; m < published.size(); ++m) {
      EXPECT_NEAR(parameters[m], published[m], 1e-5);
    }
  }
}

TEST_P(SameSolution, HasTheFlowOfTheOthers) {
  const auto result = read_restart_with_library(path(), GetParam().form, multi);
  const SolutionSample other = solution_samples().front();
  const auto expected =
      read_restart_with_library(samples_folder() + "/" + other.file, other.form, multi);
  ASSERT_TRUE(result.has_value() && expected.has_value());
  const double tolerance = GetParam().form.is_text() ? 1e-6 : 0;
  for (std::size_t v = 0; v < 5; ++v) {
    const auto& column = result->solution.flow[v];
    for (std::size_t p = 0; p < column.size(); ++p) {
      ASSERT_NEAR(column[p], expected->solution.flow[v][p], tolerance)
          << "variable " << v + 1 << " at point " << p + 1;
    }
  }
}

/// Files of the other byte order.
std::vector<SolutionSample> foreign_samples() {
  return {{"binary_single", "vtk_data/bluntfinq.bin", {2, 2, false, false}}};
}

using ForeignSolution = SampleFileTest<SolutionSample>;
INSTANTIATE_TEST_SUITE_P(Solutions, ForeignSolution, testing::ValuesIn(foreign_samples()),
                         sample_name<SolutionSample>);

TEST_P(ForeignSolution, FailsToReadInItsOwnLayout) {
  EXPECT_FALSE(read_restart_with_library(path(), GetParam().form, bluntfin).has_value());
  EXPECT_EQ(mod_p3dgrid::p3dlastfailure().file, path());
  EXPECT_GT(mod_p3dgrid::p3dlastfailure().describe().size(), path().size());
}

TEST_P(ForeignSolution, HasAHeaderThatIsHandedOverAsItStands) {
  const std::vector<Extents> reversed{{40 << 24, 32 << 24, 32 << 24}};
  EXPECT_EQ(read_restart_extents_with_library(path(), GetParam().form), reversed);
}

TEST_P(ForeignSolution, FailsToReadInAnyOtherForm) {
  for (int flags = 0; flags < 12; ++flags) {
    const RestartForm form{2, flags / 4, (flags & 2) != 0, (flags & 1) != 0};
    if (form.name() == GetParam().form.name()) continue;
    EXPECT_FALSE(read_restart_with_library(path(), form, bluntfin).has_value()) << form.name();
  }
}

}  // namespace
}  // namespace interop
