/// Every form of a restart file, read from bytes made by hand and written to the same bytes.

#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;

class RestartMatrix : public InScratchFolder, public ::testing::WithParamInterface<RestartForm> {
 protected:
  RestartMatrix() {
    const RestartForm& form = GetParam();
    set_sections(form.sections);
    // Layout 3 counts its variables in the header; all of them are in the sections.
    if (form.layout == 3) mod_gridvars::numrstrtvar.fill(0);
    // A whole read of layout 100 in single-precision records expects ordinary sections.
    made.leading = !(form.layout == 100 && form.iformat != 1 && !form.dblprec);
    if (form.layout == 0 && form.dblprec) made.equation_set = 1;
    on_allocation = [this](int status) { statuses_other_than_0 += status != 0; };
  }

  int statuses_other_than_0 = 0;
  HandMadeRestart made{GetParam()};

  /// Triplets arrive except for layout 100 in records.
  [[nodiscard]] bool triplets_arrive() const {
    const RestartForm& form = GetParam();
    return form.layout == 101 || (form.layout == 100 && form.iformat == 1);
  }
};

TEST_P(RestartMatrix, IsReadFromBytesMadeByHand) {
  write_file("restart", made.bytes());
  Restart restart(GetParam().blocks);
  restart.read("restart", GetParam());
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_FALSE(is_open("restart"));
  const int variables = made.highest_variable();
  EXPECT_EQ(restart.varvalues.extent(1), variables);
  EXPECT_EQ(restart.varvalues.extent(2), made.all_points());
  EXPECT_EQ(vector_of(restart.varvalues), made.varvalues(variables));
  if (triplets_arrive()) {
    EXPECT_EQ(vector_of(restart.auxvalues), made.auxvalues());
  }
  EXPECT_EQ(restart.auxvalues.allocated(), GetParam().layout == 100 || GetParam().layout == 101);
  EXPECT_EQ(statuses_other_than_0, GetParam().layout == 101 && GetParam().wide() ? 1 : 0);
}

TEST_P(RestartMatrix, LeavesNothingInItsRecords) {
  p3dsetwholerecords(true);
  write_file("restart", made.bytes());
  Restart restart(GetParam().blocks);
  restart.read("restart", GetParam());
  EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
}

TEST_P(RestartMatrix, ReportsATruncationAtEveryByteOnce) {
  const std::string whole = made.bytes();
  // The last number of text is still a number after it has lost digits. A last block without
  // points is an empty line, and a flag that lost digits is none that ends the chain.
  const RestartForm& form = GetParam();
  const bool digits_may_go = form.iformat == 1 && form.blocks == 1 && form.layout != 101;
  const std::size_t needed = digits_may_go ? whole.find_last_of(" \n", whole.size() - 2) + 2
                             : form.iformat == 1 && form.layout == 101 ? whole.size() - 1
                                                                       : whole.size();
  for (std::size_t length = 0; length < needed; ++length) {
    write_file("restart", whole.substr(0, length));
    calls.clear();
    nfvar.deallocate();
    sqvar.deallocate();
    dqvar.deallocate();
    Restart restart(GetParam().blocks);
    restart.read("restart", GetParam());
    ASSERT_EQ(count_calls("dispfilereaderror"), 1) << length << " of " << whole.size();
    ASSERT_TRUE(is_open("restart"));
  }
}

INSTANTIATE_TEST_SUITE_P(AllForms, RestartMatrix, ::testing::ValuesIn(all_restart_forms()),
                         [](const auto& form) { return name_of(form.param); });

/// The forms that can be written: all but the TALVEN layout.
class WrittenRestartMatrix : public RestartMatrix {};

std::vector<RestartForm> writable_forms() {
  std::vector<RestartForm> all = all_restart_forms();
  std::erase_if(all, [](const RestartForm& form) { return form.layout == 0; });
  return all;
}

/// The flow parameters of layout 2, in single precision or with its values.
template <class Real>
void fill_parameters(allocatable<Real, 2>& parameters, int blocks) {
  ASSERT_EQ(parameters.allocate(blocks, 4), allocation_done);
  for (int b = 0; b < blocks; ++b) {
    for (int m = 1; m <= 4; ++m) {
      parameters(b + 1, m) = static_cast<float>(HandMadeRestart::parameter(b, m));
    }
  }
}

TEST_P(WrittenRestartMatrix, IsWrittenToTheSameBytes) {
  const RestartForm& form = GetParam();
  Restart restart(form.blocks);
  restart.fill(made.highest_variable());
  nstep = HandMadeRestart::steps;
  dtau = HandMadeRestart::step_size;
  iflag(1) = 999;
  if (form.layout == 3) {
    ASSERT_EQ(nfvar.allocate(form.blocks), allocation_done);
    std::ranges::fill(nfvar.span(), made.highest_variable());
  }
  if (form.layout == 2 && (form.dblprec || form.iformat == 1)) fill_parameters(dqvar, form.blocks);
  if (form.layout == 2 && !form.dblprec && form.iformat != 1) fill_parameters(sqvar, form.blocks);
  restart.write("restart", form);
  EXPECT_TRUE(is_open("restart"));
  p3dcloseunit(301);
  made.leading = true;
  if (form.iformat != 1) {
    EXPECT_EQ(read_file("restart"), made.rounded().bytes());
    return;
  }
  // Text is the same numbers in other columns: it reads back to the same values.
  Restart again(form.blocks);
  dqvar.deallocate();
  again.read("restart", form);
  ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(vector_of(again.varvalues), vector_of(restart.varvalues));
  EXPECT_EQ(vector_of(again.auxvalues),
            again.auxvalues.allocated() ? vector_of(restart.auxvalues) : std::vector<float>{});
}

INSTANTIATE_TEST_SUITE_P(AllForms, WrittenRestartMatrix, ::testing::ValuesIn(writable_forms()),
                         [](const auto& form) { return name_of(form.param); });

}  // namespace
}  // namespace mod_p3dgrid
