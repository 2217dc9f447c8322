/// Every form of a restart file, read one variable at a time and put together again.

#include <gtest/gtest.h>

#include "MOD_P3DReader.hpp"
#include "grid/grid_case.hpp"
#include "restart/restart_case.hpp"

namespace mod_p3dgrid {
namespace {

using namespace test_support;

/// A form, and for layout 101 the flags of its extensions.
struct StreamedForm {
  RestartForm form;
  std::vector<int> flags{999};
};

std::string name_of_streamed(const StreamedForm& streamed) {
  std::string name = name_of(streamed.form);
  if (streamed.form.layout == 101) {
    for (const int flag : streamed.flags) name += "F" + std::to_string(flag);
  }
  return name;
}

std::vector<StreamedForm> all_streamed_forms() {
  std::vector<StreamedForm> all;
  for (const RestartForm& form : all_restart_forms()) {
    if (form.layout != 101) {
      all.push_back({form});
      continue;
    }
    for (const auto& flags :
         {std::vector<int>{999}, {1, 999}, {41, 999}, {1, 41, 999}, {41, 41, 999}}) {
      // The extensions count on a first section of five variables and nothing else.
      if (flags.size() == 1 || form.sections.size() == 1) all.push_back({form, flags});
    }
  }
  return all;
}

class Streaming : public InScratchFolder, public ::testing::WithParamInterface<StreamedForm> {
 protected:
  const RestartForm& form = GetParam().form;
  HandMadeRestart made{form};
  Restart restart{form.blocks};
  std::vector<integer> variables;  ///< those that the file holds

  Streaming() {
    made.flags = GetParam().flags;
    if (form.layout == 0 && form.dblprec) made.equation_set = 1;
    set_sections(form.sections);
    for (int v = 1; v <= made.highest_variable(); ++v) variables.push_back(v);
    if (form.layout != 101 || made.flags.size() == 1) return;
    const bool one = made.flags[0] == 1;
    for (int v = 6; v <= (one ? 10 : 8); ++v) variables.push_back(v);
    const bool three_more = made.flags.size() == 3;
    for (int v = 11; three_more && v <= 13; ++v) variables.push_back(v);
    mod_gridvars::numrstrtvar(2) = (three_more ? 13 : one ? 10 : 8) - 5;
  }

  /// Row 1 of a result as long as all points.
  std::vector<float> streamed(integer ivar) {
    std::vector<float> values(static_cast<std::size_t>(made.all_points()), -77.F);
    readnextp3dvar(ivar, "restart", form.iformat, form.dblprec,
                   static_cast<integer>(restart.idim.size()), restart.blockpoints,
                   array_view<float, 2>(values.data(), 1, made.all_points()), restart.idim,
                   restart.jdim, restart.kdim, form.layout, form.multiblock);
    return values;
  }
};

TEST_P(Streaming, EachVariableIsReadFromBytesMadeByHand) {
  write_file("restart", made.bytes());
  for (const integer ivar : variables) {
    calls.clear();
    const std::vector<float> values = streamed(ivar);
    ASSERT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
    EXPECT_FALSE(is_open("restart"));
    for (int p = 0; p < made.all_points(); ++p) {
      EXPECT_EQ(values[static_cast<std::size_t>(p)],
                static_cast<float>(HandMadeRestart::flow(ivar, p)))
          << ivar;
    }
  }
}

TEST_P(Streaming, LeavesNothingInTheRecords) {
  p3dsetwholerecords(true);
  write_file("restart", made.bytes());
  for (const integer ivar : variables) static_cast<void>(streamed(ivar));
  EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
}

INSTANTIATE_TEST_SUITE_P(AllForms, Streaming, ::testing::ValuesIn(all_streamed_forms()),
                         [](const auto& form) { return name_of_streamed(form.param); });

class Combining : public Streaming {
 protected:
  Combining() {
    nstep = HandMadeRestart::steps;
    dtau = HandMadeRestart::step_size;
    for (std::size_t m = 0; m < 3; ++m) {
      iflag(m + 1) = m < made.flags.size() ? made.flags[m] : 0;
    }
    restart.fill(std::max(13, made.highest_variable()));
    if (form.layout == 3) {
      EXPECT_EQ(nfvar.allocate(form.blocks), allocation_done);
      std::ranges::fill(nfvar.span(), made.highest_variable());
    }
    if (form.layout == 2) {
      EXPECT_EQ(dqvar.allocate(form.blocks, 4), allocation_done);
      for (int b = 0; b < form.blocks; ++b) {
        for (int m = 1; m <= 4; ++m) {
          dqvar(b + 1, m) = static_cast<float>(HandMadeRestart::parameter(b, m));
        }
      }
    }
  }

  void write_variables() {
    for (integer ivar = 1; ivar <= 13; ++ivar) {
      if (std::ranges::count(variables, ivar) == 0 && ivar > variables.back()) break;
      std::vector<float> values;
      for (int p = 0; p < made.all_points(); ++p) values.push_back(restart.varvalues(ivar, p + 1));
      writenextp3dvar(ivar, "flow", form.dblprec || form.iformat == 1, form.blocks,
                      restart.blockpoints,
                      array_view<const float, 2>(values.data(), 1, std::ssize(values)),
                      restart.idim, restart.jdim, restart.kdim);
    }
  }
  void combine() {
    combinep3dvarfiles(restart.auxvalues, "combined", form.iformat, form.dblprec, 99, form.blocks,
                       restart.idim, restart.jdim, restart.kdim, form.layout, form.multiblock);
  }
};

TEST_P(Combining, GivesTheFileThatIsWrittenWhole) {
  // Layout 3 changes the count of its first section, so the table is set for each operation.
  const auto counts = mod_gridvars::numrstrtvar;
  restart.write("whole", form);
  p3dcloseunit(301);
  mod_gridvars::numrstrtvar = counts;
  write_variables();
  ASSERT_TRUE(exists("flow000001.tmp"));
  combine();
  EXPECT_EQ(count_calls("dispfilereaderror"), 0) << p3dlastfailure().describe();
  EXPECT_EQ(read_file("combined"), read_file("whole"));
  EXPECT_FALSE(is_open("combined"));
  for (integer ivar = 1; ivar <= 15; ++ivar) {
    EXPECT_FALSE(!tmpfile(ivar).view().empty() && exists(std::string(tmpfile(ivar).view())));
  }
}

std::vector<StreamedForm> writable_streamed_forms() {
  std::vector<StreamedForm> all = all_streamed_forms();
  std::erase_if(all, [](const StreamedForm& streamed) { return streamed.form.layout == 0; });
  return all;
}

INSTANTIATE_TEST_SUITE_P(AllForms, Combining, ::testing::ValuesIn(writable_streamed_forms()),
                         [](const auto& form) { return name_of_streamed(form.param); });

}  // namespace
}  // namespace mod_p3dgrid
